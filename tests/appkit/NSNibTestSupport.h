// SPDX-License-Identifier: MIT
// What the tests of nibs share.
#pragma once

#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSPanel.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

/// What was written to standard error while `work` ran, by whomever, as lines.
inline std::vector<std::string> linesLoggedBy(const std::function<void()>& work) {
    testing::internal::CaptureStderr();
    work();
    const QString log = QString::fromStdString(testing::internal::GetCapturedStderr());
    std::vector<std::string> lines;
    for (const QString& line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        lines.push_back(line.toStdString());
    }
    return lines;
}

/// A view that writes down when it is awoken, and what was there then.
class WritingView : public NSView {
public:
    using NSView::NSView;

    void awakeFromNib() override {
        log.push_back(objectName().toStdString());
        superviewWhenAwoken = superview();
    }

    static inline std::vector<std::string> log;
    QWidget* superviewWhenAwoken = nullptr;
};

/// A view that is made with a frame, as most of AppKit's are.
class FramedView : public NSView {
public:
    explicit FramedView(const NSRect& frame) { setFrame(frame); }
};

class PanelOwner : public NSNibOwner {
public:
    void connectNib(NSNibConnections& connections) override {
        connections.outlet(QStringLiteral("panel"), panel);
        connections.outlet(QStringLiteral("box"), box);
        connections.outlet(QStringLiteral("button"), button);
        connections.outlet(QStringLiteral("checkBox"), checkBox);
        connections.outlet(QStringLiteral("label"), label);
        connections.outlet(QStringLiteral("line"), line);
        connections.outlet(QStringLiteral("count"), count);
        connections.outlet(QStringLiteral("choice"), choice);
        connections.outlet(QStringLiteral("entry"), entry);
        for (const char* name : {"go:", "enter:", "choose:"}) {
            connections.action(QString::fromLatin1(name), [this, name](QObject* sender) {
                sent.push_back(name + std::string(" from ") + sender->objectName().toStdString());
            });
        }
    }

    QPointer<NSPanel> panel;
    NSView* box = nullptr;
    NSButton* button = nullptr;
    NSButton* checkBox = nullptr;
    NSTextField* label = nullptr;
    QPointer<QLineEdit> line;
    QLabel* count = nullptr;
    QComboBox* choice = nullptr;
    QAction* entry = nullptr;
    std::vector<std::string> sent;
};

/// Puts what is called `name` into a field.
template <class T>
class OneOutlet : public NSNibOwner {
public:
    explicit OneOutlet(QString name) : m_name(std::move(name)) {}

    void connectNib(NSNibConnections& connections) override { connections.outlet(m_name, object); }

    QPointer<T> object;

private:
    QString m_name;
};

class NSNibTest : public AppKitHost {
protected:
    void SetUp() override {
        NSNib::registerClass<WritingView>(QStringLiteral("WritingView"));
        NSNib::registerClass<FramedView>(QStringLiteral("FramedView"));
        WritingView::log.clear();
    }

    /// Loads a nib that is without fault.
    void load(const QString& name, NSNibOwner& owner) {
        const std::vector<std::string> log = linesLoggedBy([&, nibName = name] {
            NSNib nib(nibName);
            EXPECT_TRUE(nib.isValid());
            EXPECT_TRUE(nib.instantiateNibWithOwner(owner, &topLevelObjects));
        });
        EXPECT_THAT(log, testing::IsEmpty());
        ASSERT_FALSE(topLevelObjects.empty());
    }

    /// What is logged when a nib is loaded that has faults.
    std::vector<std::string> faultsOf(const QString& name, NSNibOwner& owner) {
        return linesLoggedBy([&] { EXPECT_FALSE(NSNib(name).instantiateNibWithOwner(owner, &topLevelObjects)); });
    }

    std::vector<std::unique_ptr<QWidget>> topLevelObjects;
};
