// SPDX-License-Identifier: MIT
#pragma once

class QAbstractScrollArea;
class QPushButton;

/// Gives the program its look: dark and quiet, the same on every desktop.
void applyAppearance();

/// Gives a scroll area the kit's scroll bars, which are without arrows, for both directions.
void useHUDScrollBars(QAbstractScrollArea& area);

/// Gives a button the height of this program's buttons, and room beside its title. To be called again after the title
/// has changed.
void usePushButtonSize(QPushButton& button);
