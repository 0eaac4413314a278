// SPDX-License-Identifier: MIT
#pragma once

class QAbstractScrollArea;
class QPushButton;

/// Gives the program its look: dark and quiet, the same on every desktop.
void applyAppearance();

/// Gives a scroll area a slim scroll bar without arrows, up and down only: for lists and wrapped text.
void useSlimScrollBar(QAbstractScrollArea& area);

/// Gives a button the height of this program's buttons, and room beside its title. To be called again after the title
/// has changed.
void usePushButtonSize(QPushButton& button);
