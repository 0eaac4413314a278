// SPDX-License-Identifier: MIT
#include "ImagesPage.h"

#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>
#include <VXKit/support/VXKitResources.h>

#include <QDir>

#include <algorithm>
#include <utility>

namespace {

// Points.
constexpr NSRect gridFrame{{0, 0}, {424, 432}};
constexpr int columns = 4;
constexpr double cellWidth = 106;
constexpr double cellHeight = 54;
constexpr double nameHeight = 14;
constexpr double largestSide = 34;
constexpr double nameSize = 9;

constexpr double firstWhite = 0.5; // on which the dark and the light ones are seen

/// All images of the kit, each with its name below it.
class ImageGrid : public NSView {
public:
    explicit ImageGrid(const NSRect& frame) {
        setFrame(frame);
        const QDir folder(VXKitBundle()->resourcePath() + QStringLiteral("/images"));
        for (const QString& file : folder.entryList(QDir::Files, QDir::Name)) {
            m_names.append(file.section(QLatin1Char('.'), 0, 0));
        }
        setAccessibleName(m_names.join(QStringLiteral(", ")));
    }

    void setGround(double white) { change(m_white, white); }
    void setFraction(double fraction) { change(m_fraction, fraction); }
    void setScale(double scale) { change(m_scale, scale); }

    void drawRect(const NSRect& /*dirtyRect*/) override {
        NSColor::colorWithCalibratedWhite(m_white, 1).setFill();
        NSBezierPath::fillRect(bounds());
        constexpr double half = 0.5;
        constexpr double almostWhite = 0.9;
        const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(nameSize),
                                          .foregroundColor =
                                              NSColor::colorWithCalibratedWhite(m_white >= half ? 0 : almostWhite, 1),
                                          .alignment = NSCenterTextAlignment,
                                          .lineBreakMode = NSLineBreakByTruncatingTail};
        const double top = bounds().size.height;
        for (int index = 0; index < m_names.size(); ++index) {
            const double x = index % columns * cellWidth;
            const double y = top - (index / columns + 1) * cellHeight; // NOLINT(bugprone-integer-division)
            drawInMiddle(m_names[index], NSMakeRect(x, y + nameHeight, cellWidth, cellHeight - nameHeight));
            drawInRect(shortName(m_names[index]), NSMakeRect(x + 1, y, cellWidth - 2, nameHeight), attributes);
        }
    }

private:
    void change(double& value, double newValue) {
        value = newValue;
        setNeedsDisplay(true);
    }

    /// Without what many of them begin with, so that there is room for what tells them apart.
    static QString shortName(const QString& name) { return name.startsWith(u"HUD") ? name.mid(3) : name; }

    void drawInMiddle(const QString& name, const NSRect& cell) const {
        const std::shared_ptr<NSImage> image = VXKitImage(name);
        const NSSize size = image->size();
        const double scale = std::min(m_scale, largestSide / std::max(size.width, size.height));
        const NSSize drawn{size.width * scale, size.height * scale};
        image->drawInRect({{NSMidX(cell) - drawn.width / 2, NSMidY(cell) - drawn.height / 2}, drawn}, NSZeroRect,
                          NSCompositeSourceOver, m_fraction);
    }

    QStringList m_names;
    double m_white = firstWhite;
    double m_fraction = 1;
    double m_scale = 1;
};

} // namespace

ImagesPage::ImagesPage()
    : GalleryPage(QStringLiteral("images"), QStringLiteral("Images"),
                  QStringLiteral("All images of the kit, drawn sharp in every size. The names of those of dark panels "
                                 "begin with HUD, left out here."),
                  {QStringLiteral("VXKitResources"), QStringLiteral("NSImage")}) {}

ImagesPage::~ImagesPage() = default;

void ImagesPage::build(Stage& stage, SettingsPane& settings) {
    auto& grid = stage.put<ImageGrid>(gridFrame);
    settings.addSlider(QStringLiteral("Ground: white"), 0, 1, firstWhite,
                       [&grid](double white) { grid.setGround(white); });
    settings.addSlider(QStringLiteral("Opacity"), 0, 1, 1, [&grid](double fraction) { grid.setFraction(fraction); });
    settings.addSlider(QStringLiteral("Size"), 0.5, 3, 1, [&grid](double scale) { grid.setScale(scale); });
}
