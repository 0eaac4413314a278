// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSAnimationContext.h>

#include <VXKit/platform/appkit/AnimationGroup.h>

#include <QAbstractEventDispatcher>
#include <QMetaObject>
#include <QObject>
#include <QThread>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace {

int currentLoopLevel() {
    return QThread::currentThread()->loopLevel();
}

} // namespace

/// The contexts that there are at present.
class NSAnimationContext::Groups {
public:
    static Groups& shared() {
        static Groups groups;
        return groups;
    }

    NSAnimationContext& current() {
        watchTurn();
        if (m_open.empty()) {
            m_outside.m_loopLevel = std::min(m_outside.m_loopLevel, currentLoopLevel());
            return m_outside;
        }
        return *m_open.back();
    }

    void open(std::function<void()> whenEnded) {
        const double duration = current().duration();
        m_open.emplace_back(new NSAnimationContext(duration, std::move(whenEnded)));
    }

    void close() {
        // An event loop that was run within this turn, and is left, may have left some of its own.
        closeAllFrom(currentLoopLevel() + 1);
        if (!m_open.empty()) {
            m_open.pop_back();
        }
    }

    /// Closes down to `count` groups; nothing where there are no more of them.
    void closeDownTo(std::size_t count) {
        while (m_open.size() > count) {
            m_open.pop_back();
        }
    }

    [[nodiscard]] std::size_t count() const { return m_open.size(); }

private:
    Groups() { forgetOutside(); }

    /// A group that waits for an event loop within its turn stays open meanwhile: it is of a lower level.
    void closeAllFrom(int loopLevel) {
        while (!m_open.empty() && m_open.back()->m_loopLevel >= loopLevel) {
            m_open.pop_back();
        }
    }

    void watchTurn() {
        QAbstractEventDispatcher* const dispatcher = QAbstractEventDispatcher::instance();
        if (m_turn || !dispatcher) {
            return;
        }
        // Those of an application object that is gone have no turn any more.
        closeDownTo(0);
        forgetOutside();
        m_turn = QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, dispatcher, [this] { endTurn(); });
    }

    void forgetOutside() {
        m_outside.m_duration = standardDuration;
        m_outside.m_loopLevel = noLevel;
    }

    void endTurn() {
        const int loopLevel = currentLoopLevel();
        closeAllFrom(loopLevel);
        if (m_outside.m_loopLevel >= loopLevel) {
            forgetOutside();
        }
        if (m_open.empty() && m_outside.m_loopLevel == noLevel) {
            QObject::disconnect(m_turn);
        }
    }

    static constexpr int noLevel = std::numeric_limits<int>::max();

    std::vector<std::unique_ptr<NSAnimationContext>> m_open; // the outermost first
    NSAnimationContext m_outside{standardDuration, {}};
    QMetaObject::Connection m_turn;
};

NSAnimationContext::NSAnimationContext(double duration, std::function<void()> whenEnded)
    : m_duration(duration), m_loopLevel(currentLoopLevel()),
      m_group(std::make_shared<AnimationGroup>(std::move(whenEnded))) {}

NSAnimationContext::~NSAnimationContext() {
    m_group->release();
}

void NSAnimationContext::beginGrouping() {
    Groups::shared().open({});
}

void NSAnimationContext::endGrouping() {
    Groups::shared().close();
}

NSAnimationContext& NSAnimationContext::currentContext() {
    return Groups::shared().current();
}

std::size_t NSAnimationContext::openGroups() {
    return Groups::shared().count();
}

void NSAnimationContext::runAnimationGroup(const std::function<void(NSAnimationContext& context)>& changes,
                                           std::function<void()> completionHandler) {
    Groups& groups = Groups::shared();
    const std::size_t before = groups.count();
    groups.open(std::move(completionHandler));
    changes(groups.current());
    groups.closeDownTo(before);
}
