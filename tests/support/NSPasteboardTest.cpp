// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

#include <map>
#include <memory>

#include <gtest/gtest.h>

namespace {

const QString stringType = QString::fromLatin1(NSStringPboardType);
const QString utf8Type = QStringLiteral("public.utf8-plain-text");
const QString plainType = QStringLiteral("public.plain-text");

class NSPasteboardTest : public testing::Test {
protected:
    // What another program would put on the clipboard.
    static void copyElsewhere(const std::vector<std::pair<const char*, QByteArray>>& contents) {
        auto data = std::make_unique<QMimeData>();
        for (const auto& [format, bytes] : contents) {
            data->setData(QString::fromLatin1(format), bytes);
        }
        QGuiApplication::clipboard()->setMimeData(data.release());
    }

    NSPasteboard& pasteboard() { return NSPasteboard::generalPasteboard(); }

private:
    int m_argumentCount = 1;
    char m_program[5] = "test";
    char* m_arguments[2] = {m_program, nullptr};
    QGuiApplication m_application{m_argumentCount, m_arguments};
};

// Contents that change each time somebody asks what they are.
class ChangingContents : public QMimeData {
public:
    explicit ChangingContents(const QList<QStringList>& formats) : m_formats(formats) {}

    [[nodiscard]] QStringList formats() const override {
        const qsizetype last = m_formats.size() - 1;
        return m_formats.at(std::min(m_fetches++, last));
    }
    [[nodiscard]] qsizetype fetches() const { return m_fetches; }

protected:
    [[nodiscard]] QVariant retrieveData(const QString& format, QMetaType /*preferred*/) const override {
        return format.toUtf8();
    }

private:
    QList<QStringList> m_formats;
    mutable qsizetype m_fetches = 0;
};

} // namespace

TEST_F(NSPasteboardTest, IsOneForTheProcess) {
    EXPECT_EQ(&NSPasteboard::generalPasteboard(), &pasteboard());
}

TEST_F(NSPasteboardTest, NamesTheTypesOfPlainTextAndLeavesOthersTheirMimeNames) {
    copyElsewhere({{"text/html", "<b>b</b>"},
                   {"text/plain", "a"},
                   {"text/plain;charset=utf-8", "b"},
                   {"text/plain;charset=ISO-8859-1", "c"},
                   {"text/plain; charset=\"UTF-16\"", "d"},
                   {"text/plain;format=flowed", "e"}});
    EXPECT_EQ(pasteboard().types(), QStringList({QStringLiteral("text/html"), stringType, utf8Type, plainType,
                                                 QStringLiteral("text/plain;format=flowed")}));
}

TEST_F(NSPasteboardTest, KnowsTheUtf8TypeHoweverItIsWritten) {
    for (const char* format :
         {"text/plain;charset=UTF-8", "text/plain; charset=utf-8", "Text/Plain;Charset=\"utf-8\""}) {
        copyElsewhere({{format, "\xC3\xA4"}});
        EXPECT_EQ(pasteboard().types(), QStringList(utf8Type)) << format;
        EXPECT_EQ(pasteboard().stringForType(utf8Type), QStringLiteral("ä")) << format;
    }
}

TEST_F(NSPasteboardTest, FetchesItsTypesAfresh) {
    pasteboard().setString(QStringLiteral("ours"), utf8Type);
    EXPECT_EQ(pasteboard().types(), QStringList(utf8Type));
    copyElsewhere({{"image/png", "theirs"}});
    EXPECT_EQ(pasteboard().types(), QStringList(QStringLiteral("image/png")));
}

TEST_F(NSPasteboardTest, GivesBackTextsOfEveryTextType) {
    const QString text = QStringLiteral("Zürich → 東京 😀");
    for (const QString& type : {stringType, utf8Type, plainType, QStringLiteral("text/html")}) {
        pasteboard().clearContents();
        EXPECT_TRUE(pasteboard().setString(text, type));
        EXPECT_EQ(pasteboard().types(), QStringList(type));
        EXPECT_EQ(pasteboard().stringForType(type), text) << qPrintable(type);
    }
}

TEST_F(NSPasteboardTest, WritesTheFormatsThatOtherProgramsRead) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("ä"), stringType);
    pasteboard().setString(QStringLiteral("ö"), utf8Type);
    pasteboard().setString(QStringLiteral("ü"), plainType);
    const QMimeData* contents = QGuiApplication::clipboard()->mimeData();
    EXPECT_EQ(contents->data(QStringLiteral("text/plain")), QByteArray("ä"));
    EXPECT_EQ(contents->data(QStringLiteral("text/plain;charset=utf-8")), QByteArray("ö"));
    const QByteArray utf16 = contents->data(QStringLiteral("text/plain;charset=utf-16"));
    const bool isLittleEndian = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
    EXPECT_EQ(utf16, isLittleEndian ? QByteArray("\xFF\xFE\xFC\x00", 4) : QByteArray("\xFE\xFF\x00\xFC", 4));
}

TEST_F(NSPasteboardTest, KeepsWhatItSetBeforeUntilItIsCleared) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("one"), stringType);
    pasteboard().setData("two", QStringLiteral("application/x-two"));
    EXPECT_EQ(pasteboard().types(), QStringList({stringType, QStringLiteral("application/x-two")}));
    EXPECT_EQ(pasteboard().dataForType(QStringLiteral("application/x-two")), QByteArray("two"));
    pasteboard().setString(QStringLiteral("three"), stringType);
    EXPECT_EQ(pasteboard().stringForType(stringType), QStringLiteral("three"));
    pasteboard().clearContents();
    EXPECT_TRUE(pasteboard().types().isEmpty());
    EXPECT_TRUE(pasteboard().dataForType(QStringLiteral("application/x-two")).isNull());
}

TEST_F(NSPasteboardTest, DoesNotMixItsContentsWithThoseOfAnotherProgram) {
    pasteboard().setString(QStringLiteral("ours"), stringType);
    copyElsewhere({{"image/png", "theirs"}});
    pasteboard().setString(QStringLiteral("ours again"), utf8Type);
    EXPECT_EQ(pasteboard().types(), QStringList(utf8Type));
}

TEST_F(NSPasteboardTest, ReadsTextInTheCharsetThatItsWriterNamed) {
    const std::vector<std::pair<const char*, QByteArray>> texts = {
        {"text/plain;charset=ISO-8859-1", "z\xE4"},
        {"text/plain;charset=utf-16be", QByteArray("\0z\0\xE4", 4)},
        {"text/plain;charset=utf-16le", QByteArray("z\0\xE4\0", 4)},
        {"text/plain;charset=utf-16", QByteArray("\xFE\xFF\0z\0\xE4", 6)},
        {"text/plain;charset=x-unknown", "z\xC3\xA4"},
        {"text/plain;charset=x-unknown", "z\xE4"},
        {"text/plain;charset=", "z\xE4"},
    };
    for (const auto& text : texts) {
        copyElsewhere({text});
        EXPECT_EQ(pasteboard().stringForType(plainType), QStringLiteral("zä")) << text.first;
    }
}

TEST_F(NSPasteboardTest, TakesAnEmptyTextForATextAndAMissingOneForNull) {
    pasteboard().clearContents();
    EXPECT_TRUE(pasteboard().stringForType(stringType).isNull());
    pasteboard().setString(QString(), stringType);
    EXPECT_FALSE(pasteboard().stringForType(stringType).isNull());
    EXPECT_TRUE(pasteboard().stringForType(stringType).isEmpty());
}

TEST_F(NSPasteboardTest, TakesNoTextForTypesThatAreNoText) {
    pasteboard().clearContents();
    EXPECT_FALSE(pasteboard().setString(QStringLiteral("text"), QStringLiteral("image/png")));
    EXPECT_FALSE(pasteboard().setString(QStringLiteral("text"), QString()));
    EXPECT_TRUE(pasteboard().types().isEmpty());
    pasteboard().setData("bytes", QStringLiteral("image/png"));
    EXPECT_TRUE(pasteboard().stringForType(QStringLiteral("image/png")).isNull());
}

TEST(NSPasteboardWithoutApplication, IsEmptyAndTakesNothing) {
    NSPasteboard& pasteboard = NSPasteboard::generalPasteboard();
    pasteboard.clearContents();
    EXPECT_FALSE(pasteboard.setString(QStringLiteral("text"), stringType));
    EXPECT_TRUE(pasteboard.types().isEmpty());
    EXPECT_TRUE(stringValue(pasteboard).isNull());
}

TEST_F(NSPasteboardTest, StringValuePrefersTheStringTypeToUtf8AndThatToOtherPlainText) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("plain"), plainType);
    EXPECT_EQ(stringValue(pasteboard()), QStringLiteral("plain"));
    pasteboard().setString(QStringLiteral("utf8"), utf8Type);
    EXPECT_EQ(stringValue(pasteboard()), QStringLiteral("utf8"));
    pasteboard().setString(QStringLiteral("string"), stringType);
    EXPECT_EQ(stringValue(pasteboard()), QStringLiteral("string"));
}

TEST_F(NSPasteboardTest, StringValueIsNullForAnImageForRichTextAndForNothing) {
    pasteboard().clearContents();
    EXPECT_TRUE(stringValue(pasteboard()).isNull());
    auto image = std::make_unique<QMimeData>();
    image->setImageData(QImage(2, 2, QImage::Format_RGB32));
    QGuiApplication::clipboard()->setMimeData(image.release());
    EXPECT_TRUE(stringValue(pasteboard()).isNull());
    copyElsewhere({{"text/html", "<b>b</b>"}, {"text/uri-list", "file:///tmp"}});
    EXPECT_TRUE(stringValue(pasteboard()).isNull());
}

TEST_F(NSPasteboardTest, StringValueIsAnEmptyTextThatIsThere) {
    pasteboard().clearContents();
    pasteboard().setString(QString(), stringType);
    pasteboard().setString(QStringLiteral("utf8"), utf8Type);
    EXPECT_EQ(stringValue(pasteboard()), QStringLiteral(""));
    EXPECT_FALSE(stringValue(pasteboard()).isNull());
}

TEST_F(NSPasteboardTest, StringValueFetchesTheTypesForEachTest) {
    const QString utf8Format = QStringLiteral("text/plain;charset=utf-8");
    const QStringList none = {QStringLiteral("image/png")};
    auto* contents = new ChangingContents({none, {utf8Format}});
    QGuiApplication::clipboard()->setMimeData(contents);
    const qsizetype fetchesBefore = contents->fetches();
    ASSERT_EQ(fetchesBefore, 0);
    EXPECT_EQ(stringValue(pasteboard()), utf8Format);
}
