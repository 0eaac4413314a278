// SPDX-License-Identifier: MIT
#include "NameTagPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTLine.h>
#include <VXKit/controls/LTNameTag.h>

namespace {

// Points.
constexpr NSPoint smallPlace{20, 20};
constexpr NSPoint largePlace{20, 80};
constexpr NSRect plateFrame{{0, 0}, {420, 160}};

} // namespace

NameTagPage::NameTagPage()
    : GalleryPage(
          QStringLiteral("name-tag"), QStringLiteral("Name tag"),
          QStringLiteral("A name in small white text in the middle of a view that is as large as it needs; for a "
                         "dark ground."),
          {QStringLiteral("LTNameTag")}) {}

NameTagPage::~NameTagPage() = default;

void NameTagPage::build(Stage& stage, SettingsPane& settings) {
    stage.put<LTLine>(plateFrame);
    showTags(stage);
    stage.putText(NSMakeRect(0, 172, 420, 32),
                  QStringLiteral("Above made from a name, below from a dictionary: three lines high, and at least 185 "
                                 "points wide."));
    settings.addText(QStringLiteral("Name"), m_tagName, [this, &stage](const QString& name) {
        m_tagName = name;
        showTags(stage);
    });
}

/// Made anew for another name: there is one way to make each kind of tag, and both are shown.
void NameTagPage::showTags(Stage& stage) {
    const auto show = [&stage](std::unique_ptr<LTNameTag> tag, const NSPoint& place) {
        tag->setFrameOrigin(place);
        stage.addSubview(tag.get());
        return tag.release();
    };
    delete m_small;
    delete m_large;
    m_small = show(LTNameTag::nameTagWithName(m_tagName), smallPlace);
    m_large = show(LTNameTag::nameTagWithDictionary({{"name", m_tagName.toStdString()}}), largePlace);
}

void NameTagPage::takePictures(PictureBook& book) {
    book.addStates(QStringLiteral("name-tag"), QStringLiteral("Name tag"),
                   [] { return LTNameTag::nameTagWithName(QStringLiteral("Ada Lovelace")).release(); },
                   {ControlState::Normal});
    book.addStates(QStringLiteral("name-tag-of-dictionary"), QStringLiteral("Name tag of a dictionary"),
                   [] {
                       return LTNameTag::nameTagWithDictionary({{"name", "Ada Lovelace"}}).release();
                   },
                   {ControlState::Normal});
}
