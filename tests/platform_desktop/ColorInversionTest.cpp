// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/ColorInversion.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QAccessible>
#include <QAccessibleInterface>
#include <QApplication>
#include <QBackingStore>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// Paints one colour, whatever its alpha.
class Patch : public QWidget {
public:
    explicit Patch(QRgb premultiplied, QWidget* parent = nullptr) : QWidget(parent) { setColor(premultiplied); }

    void setColor(QRgb premultiplied) {
        m_color = QImage(1, 1, QImage::Format_ARGB32_Premultiplied);
        m_color.setPixel(0, 0, premultiplied);
        update();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(rect(), m_color);
    }

private:
    QImage m_color;
};

constexpr QRgb translucent = 0x80402010;
constexpr QRgb translucentInverted = 0x80406070;
constexpr QRgb solid = 0xff102030;
constexpr QRgb solidInverted = 0xffefdfcf;

constexpr QRgb other = 0xff804020;
constexpr QRgb otherInverted = 0xff7fbfdf;

/// The four bytes of a pixel as they are.
QRgb pixelAt(const QImage& image, int x, int y) {
    return reinterpret_cast<const QRgb*>(image.constScanLine(y))[x];
}

/// A window of 40 x 30 points with a solid child at (10, 5), 10 x 10 points.
class ColorInversionAtScale : public testing::TestWithParam<const char*> {
protected:
    ColorInversionAtScale() {
        qputenv("QT_SCALE_FACTOR", GetParam());
        m_application.emplace(m_argc, m_argv);
        m_window.emplace(other);
        m_window->resize(40, 30);
        m_child = new Patch(solid, &*m_window);
        m_child->setGeometry(10, 5, 10, 10);
        m_window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&*m_window));
    }

    ~ColorInversionAtScale() override {
        m_window.reset();
        m_application.reset();
        qunsetenv("QT_SCALE_FACTOR");
    }

    /// What the window shows at a place in points.
    QRgb shownAt(int x, int y) {
        QApplication::processEvents();
        const auto* image = static_cast<QImage*>(m_window->backingStore()->paintDevice());
        const int factor = QByteArray(GetParam()).toInt();
        const QRgb pixel = pixelAt(*image, x * factor, y * factor);
        EXPECT_EQ(pixelAt(*image, x * factor + factor - 1, y * factor + factor - 1), pixel);
        return pixel;
    }

    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    std::optional<QApplication> m_application;
    std::optional<Patch> m_window;
    Patch* m_child;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Factor, ColorInversionAtScale, testing::Values("1", "2"));

TEST(ColorInversion, TakesEachColourFromAlpha) {
    QImage image(3, 1, QImage::Format_ARGB32_Premultiplied);
    auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(0));
    pixels[0] = translucent;
    pixels[1] = 0;
    pixels[2] = solid;
    invertColors(image, QRect(0, 0, 2, 5));
    EXPECT_EQ(pixels[0], translucentInverted);
    EXPECT_EQ(pixels[1], 0U);
    EXPECT_EQ(pixels[2], solid);
}

TEST_P(ColorInversionAtScale, InvertsTheWindowAndItsChildren) {
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    EXPECT_EQ(shownAt(1, 1), otherInverted);
    EXPECT_EQ(shownAt(39, 29), otherInverted);
    EXPECT_EQ(shownAt(10, 5), solidInverted);
    EXPECT_EQ(shownAt(19, 14), solidInverted);
    EXPECT_EQ(shownAt(20, 14), otherInverted);
}

TEST_P(ColorInversionAtScale, InvertsOnceWhatIsPaintedAgain) {
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    ASSERT_EQ(shownAt(12, 6), solidInverted);
    m_child->update(QRect(1, 1, 3, 3));
    EXPECT_EQ(shownAt(10, 5), solidInverted);
    EXPECT_EQ(shownAt(11, 6), solidInverted);
    m_child->setColor(0xffffffff);
    EXPECT_EQ(shownAt(12, 6), 0xff000000U);
    m_window->scroll(0, 3);
    EXPECT_EQ(shownAt(1, 1), otherInverted);
    EXPECT_EQ(shownAt(12, 10), 0xff000000U);
}

TEST_P(ColorInversionAtScale, StaysAboveChildrenThatComeOrRise) {
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    auto* late = new Patch(solid, &*m_window);
    late->setGeometry(25, 5, 5, 5);
    late->show();
    EXPECT_EQ(shownAt(26, 6), solidInverted);
    m_child->raise();
    EXPECT_EQ(shownAt(12, 6), solidInverted);
}

TEST_P(ColorInversionAtScale, GrowsWithItsWindow) {
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    m_window->resize(60, 50);
    EXPECT_EQ(shownAt(59, 49), otherInverted);
}

TEST_P(ColorInversionAtScale, EndsWhenAskedTo) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    effects.setColorInversion(*m_window, true);
    effects.setColorInversion(*m_window, true);
    ASSERT_EQ(shownAt(1, 1), otherInverted);
    effects.setColorInversion(*m_window, false);
    EXPECT_EQ(shownAt(1, 1), other);
    EXPECT_EQ(shownAt(12, 6), solid);
}

TEST_P(ColorInversionAtScale, IsSeenInPicturesOfTheWindow) {
    m_window->setAttribute(Qt::WA_TranslucentBackground);
    m_window->setColor(translucent);
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    const int factor = QByteArray(GetParam()).toInt();
    const QImage grabbed =
        m_window->grab(QRect(5, 0, 30, 30)).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(pixelAt(grabbed, 0, 7 * factor), translucentInverted);
    EXPECT_EQ(pixelAt(grabbed, 6 * factor, 7 * factor), solidInverted);
    QImage rendered(60, 60, QImage::Format_ARGB32_Premultiplied);
    rendered.fill(0);
    m_window->render(&rendered, QPoint(15, 10), QRegion(), QWidget::DrawChildren);
    EXPECT_EQ(pixelAt(rendered, 16, 11), translucentInverted);
    EXPECT_EQ(pixelAt(rendered, 27, 17), solidInverted);
    EXPECT_EQ(pixelAt(rendered, 5, 5), 0U);
}

TEST_P(ColorInversionAtScale, IsSeenInPicturesOfFewerColours) {
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    QImage rendered(40, 30, QImage::Format_RGB888);
    rendered.fill(Qt::green);
    m_window->render(&rendered, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
    EXPECT_EQ(rendered.pixel(2, 2), otherInverted);
    EXPECT_EQ(rendered.pixel(12, 6), solidInverted);
}

TEST_P(ColorInversionAtScale, LetsClicksAndScreenReadersThrough) {
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&*m_window);
    ASSERT_EQ(accessible->childCount(), 1);
    WindowEffects::sharedEffects().setColorInversion(*m_window, true);
    EXPECT_EQ(accessible->childCount(), 1);
    EXPECT_EQ(m_window->childAt(12, 6), m_child);
    EXPECT_EQ(m_window->childAt(1, 1), nullptr);
}
