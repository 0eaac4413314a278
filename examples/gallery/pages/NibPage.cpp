// SPDX-License-Identifier: MIT
#include "NibPage.h"

#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/app/_LTViewLoader.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTextField.h>

#include <QLabel>

namespace {

constexpr NSRect cardFrame{{0, 0}, {360, 220}}; // points

} // namespace

/// Loads the nib "Card" and does what its button asks for.
class CardLoader : public _LTViewLoader {
public:
    void connectNib(NSNibConnections& connections) override {
        _LTViewLoader::connectNib(connections);
        connections.outlet(QStringLiteral("nameField"), m_nameField);
        connections.outlet(QStringLiteral("loudBox"), m_loudBox);
        connections.outlet(QStringLiteral("answerField"), m_answerField);
        connections.action(QStringLiteral("greet:"), [this](QObject* /*sender*/) { greet(); });
    }

private:
    void greet() {
        const QString name = m_nameField->text().isEmpty() ? QStringLiteral("stranger") : m_nameField->text();
        const QString greeting = QStringLiteral("Good day, %1.").arg(name);
        m_answerField->setText(m_loudBox->isChecked() ? greeting.toUpper() : greeting);
    }

    QPointer<LTHUDTextField> m_nameField;
    QPointer<LTHUDCheckBox> m_loudBox;
    QPointer<QLabel> m_answerField;
};

NibPage::NibPage()
    : GalleryPage(
          QStringLiteral("nib"), QStringLiteral("View from a nib"),
          QStringLiteral("A file of Qt Designer's with classes of the kit in it; its outlets and its action are "
                         "named by who loads it."),
          {QStringLiteral("_LTViewLoader"), QStringLiteral("VXNibClasses"), QStringLiteral("NSNib")}) {}

NibPage::~NibPage() = default;

void NibPage::build(Stage& stage, SettingsPane& settings) {
    m_loader = _LTViewLoader::loaderWithNib<CardLoader>(QStringLiteral("Card"));
    QWidget* const view = m_loader->view();
    if (!view) {
        return; // the log tells why
    }
    stage.addSubview(view);
    ViewCore::of(view)->setFrame(cardFrame);
    settings.addCheckBox(QStringLiteral("Enabled"), true, [view](bool isOn) { view->setEnabled(isOn); });
    settings.addSlider(QStringLiteral("Width"), 200, 420, cardFrame.size.width, [view](double width) {
        ViewCore::of(view)->setFrame({cardFrame.origin, {width, cardFrame.size.height}});
    });
}

void NibPage::leave() {
    m_loader.reset();
}
