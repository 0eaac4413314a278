// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

/// Gives Qt's own widgets the same style and font everywhere. Needs the application object.
void applyAppearance();

/// Gives Qt's own widgets in `panel` dark colours, so that sliders and menus suit the dark panel that they stand in.
/// Not the whole application: other windows are light.
void useDarkColors(QWidget& panel);
