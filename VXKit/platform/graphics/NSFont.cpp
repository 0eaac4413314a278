// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSFont.h>

#include <VXKit/platform/foundation/NSLog.h>

#include <QCoreApplication>
#include <QFont>
#include <QFontDatabase>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>

// The linker drops the resources of a static library unless something asks for them.
static void initializeFontResources() {
    Q_INIT_RESOURCE(VXKitFonts);
}

namespace {

constexpr double regularSize = 13;
constexpr double smallSize = 11;
constexpr double miniSize = 9;
constexpr double largestSize = 4096;

// The family under which the fonts of the resources are known, registered once for each application object: its end
// takes them away.
QString systemFontFamily() {
    static QPointer<QCoreApplication> registeredFor;
    static QString family;
    if (registeredFor == QCoreApplication::instance() && !registeredFor.isNull()) {
        return family;
    }
    registeredFor = QCoreApplication::instance();
    initializeFontResources();
    for (const QString& name : {QStringLiteral("Inter-Regular.otf"), QStringLiteral("Inter-Bold.otf")}) {
        const int number = QFontDatabase::addApplicationFont(QStringLiteral(":/org.vxkit.VXKit/fonts/") + name);
        const QStringList families = QFontDatabase::applicationFontFamilies(number);
        if (families.isEmpty()) {
            NSLog("The font %@ cannot be used.", name);
            continue;
        }
        family = families.constFirst();
    }
    return family;
}

int wholeSize(double fontSize) {
    const double size = fontSize > 0 ? fontSize : regularSize;
    return static_cast<int>(std::clamp(std::round(size), 1.0, largestSize));
}

} // namespace

NSFont::NSFont() : NSFont(regularSize, false) {}

NSFont::NSFont(double fontSize, bool bold) : m_pointSize(wholeSize(fontSize)), m_bold(bold) {}

NSFont NSFont::systemFontOfSize(double fontSize) {
    return {fontSize, false};
}

NSFont NSFont::boldSystemFontOfSize(double fontSize) {
    return {fontSize, true};
}

double NSFont::systemFontSize() {
    return regularSize;
}

double NSFont::smallSystemFontSize() {
    return smallSize;
}

double NSFont::systemFontSizeForControlSize(NSControlSize controlSize) {
    switch (controlSize) {
    case NSSmallControlSize:
        return smallSize;
    case NSMiniControlSize:
        return miniSize;
    case NSRegularControlSize:
        break;
    }
    return regularSize;
}

QFont NSFont::qtFont() const {
    QFont font(systemFontFamily());
    // A pixel of Qt's is a point here; its own points depend on the resolution that the desktop reports.
    font.setPixelSize(m_pointSize);
    font.setBold(m_bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}
