// SPDX-License-Identifier: MIT
// Prints what text looks like in the environment in which it runs: a width, a line height and a digest of the pixels
// for each font and string. NSFontTest runs it in many.
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QCryptographicHash>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>

namespace {

QImage drawnText(const QString& string, const NSTextAttributes& attributes) {
    QImage image(400, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    const NSGraphicsContext context(painter, 40, false);
    // Between pixels, as text comes to stand when it is centred.
    drawAtPoint(string, NSMakePoint(5.3, 7.6), attributes);
    return image;
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    for (const int size : {9, 10, 11, 12, 13, 16}) {
        for (const NSFont& font : {NSFont::systemFontOfSize(size), NSFont::boldSystemFontOfSize(size)}) {
            for (const QString& string : {QStringLiteral("Hamburgefonts gjpqy 0123 fi"), QStringLiteral("İıŞş äöüß €"),
                                          QStringLiteral("AV To Wa. …")}) {
                NSTextAttributes attributes;
                attributes.font = font;
                const NSSize measured = sizeWithAttributes(string, attributes);
                const QImage image = drawnText(string, attributes);
                QCryptographicHash digest(QCryptographicHash::Sha1);
                digest.addData({reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()});
                // Hexadecimal, so that no locale changes the decimal point and no digit is lost.
                std::printf("%d %s %a %a %s\n", size, font.isBold() ? "bold" : "regular", measured.width,
                            measured.height, digest.result().toHex().constData());
            }
        }
    }
    return 0;
}
