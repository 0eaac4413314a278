// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSImage.h>

#include <QFile>
#include <QTemporaryDir>

#include <limits>

#include <gtest/gtest.h>

namespace {

// A 10 by 6 point drawing: a black rectangle from (2, 2) to (8, 4).
const QByteArray drawing = R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="6" viewBox="0 0 10 6">
<path d="M2 2H8V4H2Z"/></svg>)";

class NSImageFile : public testing::Test {
protected:
    QString write(const QString& name, const QByteArray& bytes) {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }

    QString writePlain(const QString& name, QSize size, Qt::GlobalColor color) {
        QImage image(size, QImage::Format_ARGB32);
        image.fill(color);
        EXPECT_TRUE(image.save(m_folder.filePath(name)));
        return m_folder.filePath(name);
    }

    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

qsizetype lineCount(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

} // namespace

TEST_F(NSImageFile, IsNotReadBeforeItIsAskedFor) {
    const auto image = NSImage::initByReferencingFile(path(QStringLiteral("late.svg")));
    write(QStringLiteral("late.svg"), drawing);
    EXPECT_EQ(image->size(), NSMakeSize(10, 6));
}

TEST_F(NSImageFile, IsReadOnce) {
    const QString file = write(QStringLiteral("once.svg"), drawing);
    const auto image = NSImage::initByReferencingFile(file);
    EXPECT_TRUE(image->isValid());
    ASSERT_TRUE(QFile::remove(file));
    EXPECT_EQ(image->size(), NSMakeSize(10, 6));
    EXPECT_EQ(image->imageForScale(1).pixelColor(5, 3), QColor(Qt::black));
    EXPECT_EQ(image->imageForScale(2).pixelColor(10, 6), QColor(Qt::black));
}

TEST_F(NSImageFile, OfAVectorDrawingHasItsNaturalSizeAndSharpEdgesAtEveryPixelRatio) {
    const auto image = NSImage::initByReferencingFile(write(QStringLiteral("drawing.svg"), drawing));
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const QImage pixels = image->imageForScale(ratio);
        EXPECT_EQ(pixels.size(), QSize(qRound(10 * ratio), qRound(6 * ratio)));
        EXPECT_EQ(pixels.devicePixelRatio(), ratio);
        EXPECT_EQ(pixels.format(), QImage::Format_ARGB32_Premultiplied);
        const QRect ink(qRound(2 * ratio), qRound(2 * ratio), qRound(6 * ratio), qRound(2 * ratio));
        for (int y = 0; y < pixels.height(); ++y) {
            for (int x = 0; x < pixels.width(); ++x) {
                EXPECT_EQ(qAlpha(pixels.pixel(x, y)), ink.contains(x, y) ? 255 : 0) << ratio << ": " << x << ", " << y;
            }
        }
    }
}

TEST_F(NSImageFile, KeepsWhatItDrewForAPixelRatio) {
    const auto image = NSImage::initByReferencingFile(write(QStringLiteral("kept.svg"), drawing));
    EXPECT_EQ(image->imageForScale(1.5).cacheKey(), image->imageForScale(1.5).cacheKey());
    EXPECT_NE(image->imageForScale(1.5).cacheKey(), image->imageForScale(2).cacheKey());
}

TEST_F(NSImageFile, FillsWholePixelsWhereItsSizeTakesHalfOne) {
    const auto image = NSImage::initByReferencingFile(
        write(QStringLiteral("odd.svg"), R"(<svg xmlns="http://www.w3.org/2000/svg" width="13" height="1"
              viewBox="0 0 13 1"><path d="M0 0H13V1H0Z"/></svg>)"));
    const QImage pixels = image->imageForScale(1.5);
    ASSERT_EQ(pixels.size(), QSize(20, 2));
    EXPECT_EQ(qAlpha(pixels.pixel(0, 0)), 255);
    EXPECT_EQ(qAlpha(pixels.pixel(19, 1)), 255);
}

TEST_F(NSImageFile, OfARasterHasItsPixelsAsPoints) {
    const auto image = NSImage::initByReferencingFile(writePlain(QStringLiteral("plain.png"), QSize(4, 3), Qt::red));
    EXPECT_EQ(image->size(), NSMakeSize(4, 3));
    const QImage doubled = image->imageForScale(2);
    EXPECT_EQ(doubled.size(), QSize(8, 6));
    EXPECT_EQ(doubled.devicePixelRatio(), 2);
    EXPECT_EQ(doubled.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(doubled.pixelColor(7, 5), QColor(Qt::red));
}

TEST_F(NSImageFile, OfARasterUsesItsDoubleScaleSiblingAbovePixelRatioOne) {
    const auto image = NSImage::initByReferencingFile(writePlain(QStringLiteral("icon.png"), QSize(4, 4), Qt::red));
    writePlain(QStringLiteral("icon@2x.png"), QSize(8, 8), Qt::blue);
    EXPECT_EQ(image->size(), NSMakeSize(4, 4));
    EXPECT_EQ(image->imageForScale(1).pixelColor(2, 2), QColor(Qt::red));
    EXPECT_EQ(image->imageForScale(1.5).pixelColor(2, 2), QColor(Qt::blue));
    EXPECT_EQ(image->imageForScale(1.5).size(), QSize(6, 6));
    EXPECT_EQ(image->imageForScale(2).pixelColor(2, 2), QColor(Qt::blue));
}

TEST_F(NSImageFile, NamedForDoubleScaleCountsTwoPixelsAPoint) {
    const auto image = NSImage::initByReferencingFile(writePlain(QStringLiteral("only@2x.png"), QSize(8, 6), Qt::red));
    EXPECT_EQ(image->size(), NSMakeSize(4, 3));
    EXPECT_EQ(image->imageForScale(1).size(), QSize(4, 3));
}

TEST_F(NSImageFile, ThatIsNoImageIsInvalidAndLoggedOnce) {
    const std::vector<std::pair<QString, QByteArray>> files = {
        {QStringLiteral("text.png"), "no image"},
        {QStringLiteral("empty.png"), ""},
        {QStringLiteral("empty.svg"), ""},
        {QStringLiteral("text.svg"), "no drawing"},
        {QStringLiteral("cut.svg"), drawing.chopped(12)},
        {QStringLiteral("other.svg"), "<html><body/></html>"},
        {QStringLiteral("flat.svg"), R"(<svg xmlns="http://www.w3.org/2000/svg" width="0" height="0"/>)"},
    };
    for (const auto& [name, bytes] : files) {
        const auto image = NSImage::initByReferencingFile(write(name, bytes));
        testing::internal::CaptureStderr();
        EXPECT_FALSE(image->isValid());
        EXPECT_EQ(image->size(), NSMakeSize(0, 0));
        EXPECT_TRUE(image->imageForScale(1).isNull());
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(lineCount(log), 1) << log;
        EXPECT_NE(log.find(name.toStdString()), std::string::npos) << log;
    }
}

TEST_F(NSImageFile, ThatIsMissingMakesAnInvalidImage) {
    const auto image = NSImage::initByReferencingFile(path(QStringLiteral("missing.svg")));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(image->isValid());
    EXPECT_EQ(lineCount(testing::internal::GetCapturedStderr()), 1);
}

TEST_F(NSImageFile, DrawsNothingForAPixelRatioThatIsNone) {
    const auto image = NSImage::initByReferencingFile(write(QStringLiteral("ratio.svg"), drawing));
    for (const double ratio : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TRUE(image->imageForScale(ratio).isNull()) << ratio;
    }
    testing::internal::CaptureStderr();
    EXPECT_TRUE(image->imageForScale(std::numeric_limits<double>::infinity()).isNull());
    EXPECT_EQ(lineCount(testing::internal::GetCapturedStderr()), 1);
}

TEST(NSImageNamed, FindsTheHostsImageWithAndWithoutExtensionAsOneObject) {
    const auto image = NSImage::imageNamed(QStringLiteral("StatusIcon"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->size(), NSMakeSize(18, 22));
    EXPECT_EQ(NSImage::imageNamed(QStringLiteral("StatusIcon.svg")), image);
    EXPECT_EQ(NSImage::imageNamed(QStringLiteral("StatusIcon")), image);
}

TEST(NSImageNamed, FindsTheDoubleScaleSiblingInTheHostsResources) {
    const auto image = NSImage::imageNamed(QStringLiteral("Dot"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->imageForScale(2).pixelColor(4, 4), QColor(Qt::blue));
}

TEST(NSImageNamed, IsNullForANameThatTheHostDoesNotHold) {
    EXPECT_EQ(NSImage::imageNamed(QStringLiteral("Missing")), nullptr);
    EXPECT_EQ(NSImage::imageNamed(QStringLiteral("CopyIcon")), nullptr);
}
