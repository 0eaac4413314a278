// SPDX-License-Identifier: MIT
#include "TablePage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDCheckBoxCell.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/platform/appkit/NSArrayController.h>

#include <QHeaderView>

namespace {

constexpr NSRect tableFrame{{0, 0}, {424, 250}}; // points
constexpr double firstRowHeight = 20;
constexpr int boxColumnWidth = 24;
constexpr int nameColumnWidth = 220;
constexpr int narrowNameColumnWidth = 90;
constexpr int firstRows = 24;

NSArray rows(int count) {
    constexpr const char* names[] = {"Addresses", "Bibliography", "Calendar", "Drawing",  "Envelopes",
                                     "Footnotes", "Glossary",     "Hyphens",  "Invoices", "Journal"};
    constexpr std::int64_t enabled[] = {1, 0, -1};
    NSArray made;
    for (int row = 0; row < count; ++row) {
        made.emplace_back(NSDictionary{{"enabled", enabled[row % 3]},
                                       {"name", std::string(names[row % 10])},
                                       {"size", std::to_string(12 + 7 * row) + " kB"}});
    }
    return made;
}

LTHUDTableView* makeTable(const NSRect& frame, NSArrayController& rows, int nameWidth) {
    auto* const table = new LTHUDTableView(frame);
    table->setAccessibleName(QStringLiteral("Plugins"));
    table->setDataSource(&rows);
    table->addTableColumn(QStringLiteral("enabled"), QString());
    table->addTableColumn(QStringLiteral("name"), QStringLiteral("Name"));
    table->addTableColumn(QStringLiteral("size"), QStringLiteral("Size"));
    table->setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
    table->setColumnWidth(0, boxColumnWidth);
    table->setColumnWidth(1, nameWidth);
    table->horizontalHeader()->setStretchLastSection(true);
    table->sortByColumn(1, Qt::AscendingOrder);
    table->setSortingEnabled(true);
    table->setTabKeyNavigation(false);
    return table;
}

LTHUDScrollBar* makeScrollBar(const NSRect& frame, Qt::Orientation orientation) {
    auto* const bar = new LTHUDScrollBar(orientation);
    bar->setFrame(frame);
    bar->awakeFromNib();
    bar->setRange(0, 100);
    bar->setPageStep(50);
    bar->setValue(25);
    return bar;
}

} // namespace

TablePage::TablePage()
    : GalleryPage(
          QStringLiteral("table"), QStringLiteral("Table and scroll bars"),
          QStringLiteral("Rows with check boxes, sorted by a click on the header. A box with a badge is of what "
                         "is installed already."),
          {QStringLiteral("LTHUDTableView"), QStringLiteral("LTHUDScrollBar"), QStringLiteral("LTHUDCheckBoxCell")}) {}

TablePage::~TablePage() = default;

void TablePage::build(Stage& stage, SettingsPane& settings) {
    m_rows = std::make_unique<NSArrayController>(rows(firstRows));
    auto* const table = makeTable(tableFrame, *m_rows, nameColumnWidth);
    stage.addSubview(table);
    table->setFrame(tableFrame);
    table->selectRow(1);
    stage.putText(NSMakeRect(0, 270, 200, 16), QStringLiteral("Scroll bars by themselves"));
    auto* const vertical = makeScrollBar(NSMakeRect(0, 292, 15, 120), Qt::Vertical);
    stage.addSubview(vertical);
    auto* const horizontal = makeScrollBar(NSMakeRect(30, 292, 200, 15), Qt::Horizontal);
    stage.addSubview(horizontal);
    for (NSScroller* bar : {vertical, horizontal}) {
        bar->setFocusPolicy(Qt::StrongFocus);
    }
    QObject::connect(vertical, &QScrollBar::valueChanged, horizontal, &QScrollBar::setValue);
    QObject::connect(horizontal, &QScrollBar::valueChanged, vertical, &QScrollBar::setValue);

    settings.addCheckBox(QStringLiteral("Enabled"), true, [table](bool isOn) { table->setEnabled(isOn); });
    settings.addCheckBox(QStringLiteral("Alternating rows"), table->usesAlternatingRowBackgroundColors(),
                         [table](bool isOn) { table->setUsesAlternatingRowBackgroundColors(isOn); });
    settings.addCheckBox(QStringLiteral("Header"), true,
                         [table](bool isOn) { table->horizontalHeader()->setVisible(isOn); });
    settings.addSlider(QStringLiteral("Rows"), 0, 60, firstRows,
                       [this](double count) { m_rows->setContent(rows(static_cast<int>(count))); });
    settings.addSlider(QStringLiteral("Height of a row"), 16, 48, firstRowHeight,
                       [table](double height) { table->setRowHeight(height); });
    settings.addSlider(QStringLiteral("Scroll bars: value"), 0, 100, vertical->value(),
                       [vertical](double value) { vertical->setValue(static_cast<int>(value)); });
    settings.addSlider(QStringLiteral("Scroll bars: page"), 0, 200, vertical->pageStep(), [=](double page) {
        vertical->setPageStep(static_cast<int>(page));
        horizontal->setPageStep(static_cast<int>(page));
    });
}

void TablePage::takePictures(PictureBook& book) {
    NSArrayController few(rows(8));
    book.addStates(QStringLiteral("table"), QStringLiteral("Table"),
                   [&few] {
                       auto* const table = makeTable(NSMakeRect(0, 0, 250, 130), few, narrowNameColumnWidth);
                       table->selectRow(1);
                       return table;
                   },
                   {ControlState::Normal, ControlState::Focused, ControlState::Disabled, ControlState::Inactive});
    const std::vector<ControlState> states{ControlState::Normal, ControlState::Inactive};
    book.addStates(
        QStringLiteral("scroll-bar-vertical"), QStringLiteral("Scroll bar"),
        [] { return makeScrollBar(NSMakeRect(0, 0, 15, 90), Qt::Vertical); }, states);
    book.addStates(
        QStringLiteral("scroll-bar-horizontal"), QStringLiteral("Scroll bar"),
        [] { return makeScrollBar(NSMakeRect(0, 0, 140, 15), Qt::Horizontal); }, states);
}
