// SPDX-License-Identifier: MIT
#pragma once

#include "PreferencesPage.h"
#include "sync/SyncSettings.h"

#include <QString>

#include <functional>

class LTHUDCheckBox;
class LTHUDLineEdit;
class LTHUDSecureTextField;
class LTHUDTextField;
class NSTextField;

/// Which folder on which server the snippets are kept in sync with. What is typed counts when it is applied: by the
/// button, or when the window is closed.
class SyncPage : public PreferencesPage {
public:
    /// Is given settings that make sense, and the password where one was typed.
    using Apply = std::function<void(const SyncSettings&, const QString& password)>;

    explicit SyncPage(Apply apply);

    /// Shows what is kept, in place of what was typed.
    void reload();

    /// Applies what was typed where it differs from what is kept. False where it makes no sense, which the page says.
    bool applyChanges();

    /// The field to type in first.
    [[nodiscard]] LTHUDLineEdit& firstField() const;

private:
    void connectNib(NSNibConnections& nib) override;
    void syncNow();
    [[nodiscard]] SyncSettings typed() const;
    bool apply();
    void advise();

    Apply m_apply;
    LTHUDTextField* m_address = nullptr;
    LTHUDTextField* m_name = nullptr;
    LTHUDSecureTextField* m_password = nullptr;
    LTHUDCheckBox* m_isOn = nullptr;
    NSTextField* m_note = nullptr;
};
