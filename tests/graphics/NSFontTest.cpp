// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSFont.h>

#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QFontInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A desktop's settings that change how text looks where they are honoured.
const QByteArray fullHinting = R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<dir>/usr/share/fonts</dir>
<match target="font"><edit name="antialias" mode="assign"><bool>true</bool></edit>
<edit name="hinting" mode="assign"><bool>true</bool></edit>
<edit name="hintstyle" mode="assign"><const>hintfull</const></edit>
<edit name="autohint" mode="assign"><bool>true</bool></edit>
<edit name="rgba" mode="assign"><const>rgb</const></edit>
<edit name="lcdfilter" mode="assign"><const>lcddefault</const></edit></match>
<match target="pattern"><edit name="hintstyle" mode="assign"><const>hintfull</const></edit>
<edit name="rgba" mode="assign"><const>rgb</const></edit>
<edit name="dpi" mode="assign"><double>144</double></edit></match></fontconfig>)";

const QByteArray noSmoothing = R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<dir>/usr/share/fonts</dir>
<match target="font"><edit name="antialias" mode="assign"><bool>false</bool></edit></match>
<match target="pattern"><edit name="antialias" mode="assign"><bool>false</bool></edit></match></fontconfig>)";

const QByteArray otherFamily = R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<dir>/usr/share/fonts</dir>
<match target="pattern"><test name="family"><string>Inter</string></test>
<edit name="family" mode="assign" binding="same"><string>DejaVu Sans</string></edit></match></fontconfig>)";

const QByteArray noFonts = R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig></fontconfig>)";

class FontInEnvironment : public testing::Test {
protected:
    // What the probe prints with these variables changed; one line for each font and string.
    std::string probed(const std::vector<std::pair<QString, QString>>& variables) {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("HOME"), m_folder.path());
        for (const char* inherited : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
            if (qEnvironmentVariableIsSet(inherited)) {
                environment.insert(QString::fromLatin1(inherited), qEnvironmentVariable(inherited));
            }
        }
        for (const auto& [name, value] : variables) {
            environment.insert(name, value);
        }
        QProcess probe;
        probe.setProcessEnvironment(environment);
        probe.start(QString::fromLatin1(VXKIT_FONT_PROBE), QStringList());
        EXPECT_TRUE(probe.waitForFinished()) << qPrintable(probe.errorString());
        EXPECT_EQ(probe.exitCode(), 0) << probe.readAllStandardError().constData();
        return probe.readAllStandardOutput().toStdString();
    }

    QString write(const QString& name, const QByteArray& bytes) {
        QString path = m_folder.filePath(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }

private:
    QTemporaryDir m_folder;
};

using NSFontOfApplication = TestWithApplication;

} // namespace

TEST(NSFont, HasAppKitsSystemSizes) {
    EXPECT_EQ(NSFont::systemFontSize(), 13);
    EXPECT_EQ(NSFont::smallSystemFontSize(), 11);
    EXPECT_EQ(NSFont::systemFontSizeForControlSize(NSRegularControlSize), 13);
    EXPECT_EQ(NSFont::systemFontSizeForControlSize(NSSmallControlSize), 11);
    EXPECT_EQ(NSFont::systemFontSizeForControlSize(NSMiniControlSize), 9);
}

TEST(NSFont, RoundsItsSizeToWholePointsAndTakesABadOneForTheStandardSize) {
    EXPECT_EQ(NSFont::systemFontOfSize(12).pointSize(), 12);
    EXPECT_EQ(NSFont::systemFontOfSize(11.5).pointSize(), 12);
    EXPECT_EQ(NSFont::systemFontOfSize(0.2).pointSize(), 1);
    for (const double size : {0.0, -3.0, std::nan("")}) {
        EXPECT_EQ(NSFont::systemFontOfSize(size).pointSize(), 13);
    }
}

TEST(NSFont, IsEqualBySizeAndWeight) {
    EXPECT_EQ(NSFont(), NSFont::systemFontOfSize(13));
    EXPECT_NE(NSFont::systemFontOfSize(13), NSFont::boldSystemFontOfSize(13));
    EXPECT_NE(NSFont::systemFontOfSize(13), NSFont::systemFontOfSize(12));
    EXPECT_TRUE(NSFont::boldSystemFontOfSize(13).isBold());
}

TEST_F(NSFontOfApplication, IsInterAtAsManyPixelsWithoutHinting) {
    for (const NSFont& font : {NSFont::systemFontOfSize(12), NSFont::boldSystemFontOfSize(12)}) {
        const QFont qtFont = font.qtFont();
        EXPECT_EQ(qtFont.pixelSize(), 12);
        EXPECT_EQ(qtFont.bold(), font.isBold());
        EXPECT_EQ(qtFont.hintingPreference(), QFont::PreferNoHinting);
        EXPECT_TRUE((qtFont.styleStrategy() & QFont::NoSubpixelAntialias) != 0);
        const QFontInfo info(qtFont);
        EXPECT_EQ(info.family(), QStringLiteral("Inter"));
        EXPECT_EQ(info.bold(), font.isBold());
        EXPECT_EQ(info.pixelSize(), 12);
    }
}

TEST(NSFontWithoutRestart, IsThereForASecondApplicationObject) {
    int count = 1;
    std::string name = "test";
    char* arguments[] = {name.data(), nullptr};
    NSSize first;
    for (int run = 0; run < 2; ++run) {
        const QGuiApplication application(count, arguments);
        const NSSize measured = sizeWithAttributes(QStringLiteral("Text"));
        EXPECT_EQ(QFontInfo(NSFont().qtFont()).family(), QStringLiteral("Inter"));
        if (run == 0) {
            first = measured;
        }
        EXPECT_EQ(measured, first);
    }
}

TEST_F(FontInEnvironment, HasTheSameWidthsAndPixelsEverywhere) {
    const QString hinted = write(QStringLiteral("hinted.conf"), fullHinting);
    const QString replaced = write(QStringLiteral("replaced.conf"), otherFamily);
    const QString empty = write(QStringLiteral("empty.conf"), noFonts);
    const QString home = write(QStringLiteral("home/fontconfig/fonts.conf"), fullHinting);
    const auto variable = [](const char* name, const QString& value) {
        return std::pair(QString::fromLatin1(name), value);
    };
    const std::vector<std::pair<const char*, std::vector<std::pair<QString, QString>>>> environments = {
        {"German",
         {variable("LC_ALL", QStringLiteral("de_DE.UTF-8")), variable("LANG", QStringLiteral("de_DE.UTF-8"))}},
        {"Turkish",
         {variable("LC_ALL", QStringLiteral("tr_TR.UTF-8")), variable("LANG", QStringLiteral("tr_TR.UTF-8"))}},
        {"no language", {variable("LC_ALL", QStringLiteral("C"))}},
        {"72 dots an inch", {variable("QT_FONT_DPI", QStringLiteral("72"))}},
        {"144 dots an inch", {variable("QT_FONT_DPI", QStringLiteral("144"))}},
        {"full hinting and sub-pixels", {variable("FONTCONFIG_FILE", hinted)}},
        {"another family in its place", {variable("FONTCONFIG_FILE", replaced)}},
        {"no fonts at all", {variable("FONTCONFIG_FILE", empty)}},
        {"settings of the person", {variable("XDG_CONFIG_HOME", QFileInfo(home).path() + QStringLiteral("/.."))}},
        {"scaled twice", {variable("QT_SCALE_FACTOR", QStringLiteral("2"))}},
    };
    const std::string expected = probed({});
    EXPECT_FALSE(expected.empty());
    for (const auto& [name, variables] : environments) {
        EXPECT_EQ(probed(variables), expected) << name;
    }
}

TEST_F(FontInEnvironment, KeepsItsWidthsWhereAllSmoothingIsOff) {
    const auto widths = [](const std::string& lines) {
        std::istringstream stream(lines);
        std::vector<std::string> result;
        for (std::string size, style, width, height, digest; stream >> size >> style >> width >> height >> digest;) {
            result.push_back(width);
        }
        return result;
    };
    const QString unsmoothed = write(QStringLiteral("unsmoothed.conf"), noSmoothing);
    const std::vector<std::string> expected = widths(probed({}));
    EXPECT_EQ(expected.size(), 36U);
    EXPECT_EQ(widths(probed({{QStringLiteral("FONTCONFIG_FILE"), unsmoothed}})), expected);
}
