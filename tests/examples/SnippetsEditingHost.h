// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetsWindowHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <memory>
#include <string>
#include <vector>

/// A person who edits texts in the window.
class SnippetsEditingHost : public SnippetsWindowHost {
protected:
    SnippetTextEdit* editor() const { return window->findChild<SnippetTextEdit*>(QStringLiteral("preview")); }
    MessageBar* messageBar() const { return window->findChild<MessageBar*>(QStringLiteral("messageBar")); }
    std::shared_ptr<Snippet> selected() const { return window->selectedSnippet(); }
    SnippetsFooter* footer() const { return window->findChild<SnippetsFooter*>(); }
    std::string selectedText() const { return selected()->text().toStdString(); }

    void edit() { press(Qt::Key_E, Qt::ControlModifier); }
    void undo() { press(Qt::Key_Z, Qt::ControlModifier); }
    void redo() { press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }

    void rename(const char* title) {
        const AnimationDurationsForTesting none(0);
        whenNextModalRunHasBegun(application, [this, title] {
            application.modalWindow()->findChild<QLineEdit*>()->setText(QString::fromUtf8(title));
            pressInSheet(Qt::Key_Return);
        });
        press(Qt::Key_F2);
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const std::shared_ptr<_LTSnippet>& snippet : database->snippets()) {
            result.push_back(std::dynamic_pointer_cast<Snippet>(snippet)->text().toStdString());
        }
        return result;
    }
};
