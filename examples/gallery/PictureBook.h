// SPDX-License-Identifier: MIT
#pragma once

#include "Desk.h"

#include <QImage>
#include <QSet>
#include <QString>

#include <functional>
#include <vector>

class NSWindow;
class QWidget;

/// A state of a control, which a picture shows.
enum class ControlState { Normal, Focused, Pressed, Disabled, Inactive };

/// The pictures of the gallery: each a file in a folder, those of states and effects together on a sheet as well.
///
/// What cannot be written is remembered, and nothing after it is tried.
class PictureBook {
public:
    explicit PictureBook(QString folder);

    /// Makes the folder where there is none; false where that cannot be.
    [[nodiscard]] bool open();
    /// What went wrong, for a person to read; null where nothing did.
    [[nodiscard]] const QString& problem() const { return m_problem; }
    /// The classes of all widgets that pictures have shown.
    [[nodiscard]] const QSet<QString>& shownClasses() const { return m_shownClasses; }

    /// What follows belongs under this title on the sheet.
    void beginSection(const QString& title);

    /// A picture of `window` as the screen shows it, with a margin; not on the sheet.
    void addPage(const QString& name, NSWindow& window);
    /// The same of a window that a page is about, with `around` points on every side, on the sheet.
    void addWindow(const QString& name, const QString& caption, NSWindow& window, double around = 48);
    /// A picture of a part of the screen, on the sheet.
    void addArea(const QString& name, const QString& caption, const NSRect& area);
    /// The same without handing the event loop a moment: for the middle of an animation.
    void addFrozenArea(const QString& name, const QString& caption, const NSRect& area);

    /// Pictures of a control in states, each in a dark panel: `make` makes it anew, with a frame of its own.
    void addStates(const QString& name, const QString& caption, const std::function<QWidget*()>& make,
                   const std::vector<ControlState>& states = {ControlState::Normal, ControlState::Focused,
                                                              ControlState::Pressed, ControlState::Disabled,
                                                              ControlState::Inactive});

    /// Writes the sheet.
    void writeContactSheet();

private:
    struct Entry {
        QString caption;
        QImage picture;
    };
    struct Section {
        QString title;
        std::vector<std::vector<Entry>> rows;
    };

    void save(const QString& name, const QImage& picture);
    void add(const QString& name, const QString& caption, const QImage& picture);
    void beginRow();
    void noteClasses();

    QString m_folder;
    QString m_problem;
    QSet<QString> m_shownClasses;
    std::vector<Section> m_sections;
    Desk m_desk;
};

/// Shows `window` with the keyboard, and waits until it has that: what is drawn looks different before.
void showWithKeyboard(NSWindow& window);

/// Calls `action` with the window that runs modally as soon as there is one, from within that run. For pictures of what
/// waits for an answer; `action` ends it.
void whileModal(const std::function<void(NSWindow& window)>& action);
