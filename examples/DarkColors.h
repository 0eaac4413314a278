// SPDX-License-Identifier: MIT
#pragma once

#include <QPalette>

/// The colours of Qt's own widgets beside the kit's dark windows.
inline QPalette darkColors() {
    struct ColorOfRole {
        QPalette::ColorRole role;
        QRgb color;
    };
    constexpr ColorOfRole colors[] = {
        {QPalette::Window, 0xff2a2c30},      {QPalette::WindowText, 0xffe4e6e9},
        {QPalette::Base, 0xff1e2023},        {QPalette::AlternateBase, 0xff34373d},
        {QPalette::Text, 0xffe4e6e9},        {QPalette::PlaceholderText, 0xff989da5},
        {QPalette::Button, 0xff3a3d43},      {QPalette::ButtonText, 0xffe4e6e9},
        {QPalette::BrightText, 0xffffffff},  {QPalette::Light, 0xff4a4e55},
        {QPalette::Midlight, 0xff414449},    {QPalette::Mid, 0xff2e3034},
        {QPalette::Dark, 0xff1a1b1e},        {QPalette::Shadow, 0xff0e0f10},
        {QPalette::Highlight, 0xff2f65ba},   {QPalette::HighlightedText, 0xffffffff},
        {QPalette::Link, 0xff74a9f7},        {QPalette::LinkVisited, 0xffb199ea},
        {QPalette::ToolTipBase, 0xff3a3d43}, {QPalette::ToolTipText, 0xffe4e6e9},
    };
    constexpr QRgb disabledText = 0xff8a8f97;
    constexpr QRgb disabledHighlight = 0xff5a6472;

    QPalette palette;
    for (const ColorOfRole& entry : colors) {
        palette.setColor(entry.role, QColor::fromRgb(entry.color));
    }
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor::fromRgb(disabledText));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor::fromRgb(disabledHighlight));
    return palette;
}
