// SPDX-License-Identifier: MIT
#include "GalleryWindow.h"

#include "Appearance.h"
#include "GalleryApplication.h"
#include "SettingsPane.h"
#include "Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDLineEdit.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/controls/LTLine.h>
#include <VXKit/platform/desktop/MotionPreference.h>

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QShortcut>

#include <cmath>

namespace {

// Points, from the bottom left of the window.
constexpr NSRect windowFrame{{0, 0}, {880, 580}};
constexpr NSRect listFrame{{12, 46}, {176, 506}};
constexpr NSRect windowTitleFrame{{0, 562}, {880, 16}};
constexpr NSRect titleFrame{{208, 526}, {424, 24}};
constexpr NSRect textFrame{{208, 490}, {424, 32}};
constexpr NSRect stageFrame{{208, 46}, Stage::standardSize};
constexpr NSRect settingsTitleFrame{{652, 526}, {216, 24}};
constexpr NSRect settingsFrame{{652, 46}, {216, 474}};
constexpr NSRect motionFrame{{14, 8}, {200, 20}};
constexpr NSRect quitFrame{{764, 4}, {104, 28}};

constexpr double rowHeight = 24;
constexpr double titleSize = 17;
constexpr double settingsTitleSize = 13;
constexpr double textSize = 11;
constexpr double windowTitleSize = 11;

} // namespace

GalleryWindow::GalleryWindow()
    : LTHUDWindow(windowFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false), m_pages(makeGalleryPages()) {
    useDarkColors(*this);
    setWindowTitle(QStringLiteral("VXKit Gallery"));
    makeFrame();
    makeList();
    addShortcuts();
    awakeFromNib();
    center();
}

GalleryWindow::~GalleryWindow() {
    for (const std::unique_ptr<GalleryPage>& page : m_pages) {
        page->leave();
    }
}

/// All that stays from page to page.
void GalleryWindow::makeFrame() {
    ViewCore& content = *ViewCore::of(contentView());
    const auto addText = [&](const NSRect& frame, const QString& text, const NSFont& font) {
        auto* const field = new NSTextField(frame);
        makeWhite(*field, text, font);
        content.addSubview(field);
        return field;
    };
    NSTextField* const heading =
        addText(windowTitleFrame, this->windowTitle(), NSFont::systemFontOfSize(windowTitleSize));
    const double headingWidth = std::ceil(heading->attributedStringValue().size().width);
    heading->setFrameSize({headingWidth, windowTitleFrame.size.height});
    heading->setFrameOrigin({std::round((windowFrame.size.width - headingWidth) / 2), windowTitleFrame.origin.y});
    heading->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_title = addText(titleFrame, {}, NSFont::boldSystemFontOfSize(titleSize));
    m_text = addText(textFrame, {}, NSFont::systemFontOfSize(textSize));
    makeExplaining(*m_text, {}, m_text->font());
    addText(settingsTitleFrame, QStringLiteral("Settings"), NSFont::boldSystemFontOfSize(settingsTitleSize));

    auto* const motion = new LTHUDCheckBox(motionFrame);
    motion->setTitle(QStringLiteral("Reduce motion"));
    motion->setChecked(prefersReducedMotion());
    connect(motion, &QAbstractButton::toggled, this, &GalleryApplication::setReducesMotion);
    content.addSubview(motion);

    auto* const quit = new LTHUDButton(quitFrame);
    quit->setTitle(QStringLiteral("&Quit"));
    connect(quit, &QAbstractButton::clicked, this, &GalleryWindow::asksToQuit);
    content.addSubview(quit);
}

void GalleryWindow::makeList() {
    for (const std::unique_ptr<GalleryPage>& page : m_pages) {
        m_titles.addObject(NSDictionary{{"title", page->title().toStdString()}});
    }
    m_list = new LTHUDTableView(listFrame);
    m_list->setAccessibleName(QStringLiteral("Pages"));
    m_list->setDataSource(&m_titles);
    m_list->addTableColumn(QStringLiteral("title"), QString());
    m_list->setRowHeight(rowHeight);
    m_list->horizontalHeader()->hide();
    m_list->horizontalHeader()->setStretchLastSection(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setTabKeyNavigation(false);
    ViewCore::of(contentView())->addSubview(m_list);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& index) { buildPage(index.row()); });
}

void GalleryWindow::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, const std::function<void()>& action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    add(Qt::CTRL | Qt::Key_PageDown, [this] { showPage(m_current + 1); });
    add(Qt::CTRL | Qt::Key_PageUp, [this] { showPage(m_current - 1); });
    add(Qt::CTRL | Qt::Key_Q, [this] { Q_EMIT asksToQuit(); });
}

void GalleryWindow::showPage(int index) {
    if (index >= 0 && index < static_cast<int>(m_pages.size())) {
        m_list->selectRow(index);
    }
}

bool GalleryWindow::showPageNamed(const QString& name) {
    for (std::size_t index = 0; index < m_pages.size(); ++index) {
        if (m_pages[index]->name() == name) {
            showPage(static_cast<int>(index));
            return true;
        }
    }
    return false;
}

void GalleryWindow::buildPage(int index) {
    if (index < 0 || index == m_current) {
        return;
    }
    if (m_current >= 0) {
        m_pages[static_cast<std::size_t>(m_current)]->leave();
    }
    setDefaultButtonCell(nullptr);
    delete m_stage;
    delete m_settings;
    m_current = index;
    GalleryPage& page = *m_pages[static_cast<std::size_t>(index)];
    m_title->setStringValue(page.title());
    m_text->setStringValue(page.text());
    ViewCore& content = *ViewCore::of(contentView());
    m_stage = new Stage(stageFrame);
    content.addSubview(m_stage);
    m_settings = new SettingsPane(settingsFrame);
    content.addSubview(m_settings);
    page.build(*m_stage, *m_settings);
    linkKeyViews();
}

/// The fields take Tab for themselves and go where they are told: to what comes next in the window.
void GalleryWindow::linkKeyViews() {
    for (auto* const child : contentView()->findChildren<QLineEdit*>()) {
        if (auto* const field = dynamic_cast<LTHUDLineEdit*>(child)) {
            QWidget* next = field->nextInFocusChain();
            while (next != field && !((next->focusPolicy() & Qt::TabFocus) && next->isEnabled())) {
                next = next->nextInFocusChain();
            }
            field->setNextKeyView(next);
        }
    }
}
