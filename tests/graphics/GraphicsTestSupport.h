// SPDX-License-Identifier: MIT
// Draws through a graphics context into pixels that a test can look at.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

#include <QColor>
#include <QGuiApplication>
#include <QImage>
#include <QRect>

#include <array>
#include <functional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

enum class Flipped { No, Yes };

// What `drawing` draws in an area of `size` points, at `pixelRatio` pixels a point, on `background`. The image's own
// device pixel ratio is 1, so that its pixels can be counted.
QImage drawn(NSSize size, double pixelRatio, const std::function<void()>& drawing, Flipped flipped = Flipped::No,
             QColor background = Qt::transparent);

// The same at one pixel a point.
QImage drawn(NSSize size, const std::function<void()>& drawing);

// An image of nothing but `background` with `color` in `rect`, in pixels from the top left.
QImage plain(QSize pixels, QRect rect, QColor color, QColor background = Qt::transparent);

// The largest difference between two images of one size in a channel of a pixel; 256 when their sizes differ.
int difference(const QImage& left, const QImage& right);

// The pixels that are not transparent.
QRect inkOf(const QImage& image);

// Text needs an application object.
class TestWithApplication : public testing::Test {
    int m_count = 1;
    std::string m_name = "test";
    std::array<char*, 2> m_arguments = {m_name.data(), nullptr};
    QGuiApplication m_application{m_count, m_arguments.data()};
};

// Failed comparisons show what they compared.
std::ostream& operator<<(std::ostream& stream, const NSPoint& point);
std::ostream& operator<<(std::ostream& stream, const NSSize& size);
std::ostream& operator<<(std::ostream& stream, const NSRect& rect);
