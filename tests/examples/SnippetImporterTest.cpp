// SPDX-License-Identifier: MIT
#include "../MadeUpFile.h"
#include "SnippetsHost.h"

#include <SnippetImporter.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;

class SnippetImporterTest : public SnippetsHost {
protected:
    QString path(const QString& relative) const { return folder.filePath(relative); }

    QString write(const QString& relative, std::string_view bytes) const {
        const QFileInfo info(path(relative));
        EXPECT_TRUE(QDir().mkpath(info.path()));
        QFile file(info.filePath());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes.data(), static_cast<qint64>(bytes.size())), static_cast<qint64>(bytes.size()));
        return info.filePath();
    }

    SnippetImportResult import(const QStringList& paths) { return SnippetImporter(database).importPaths(paths); }

    /// Why the one file with these bytes is refused; it must be the only one, between two that are imported.
    std::string refusalOf(std::string_view bytes) {
        const QString bad = write(QStringLiteral("bad"), bytes);
        const SnippetImportResult result =
            import({write(QStringLiteral("before.txt"), "before"), bad, write(QStringLiteral("after.txt"), "after")});
        EXPECT_EQ(result.importedCount, 2U);
        if (result.refusals.size() != 1) {
            return {};
        }
        EXPECT_EQ(result.refusals.front().name, bad);
        return result.refusals.front().reason.toStdString();
    }

    std::vector<std::string> titles() const {
        std::vector<std::string> list;
        for (const std::shared_ptr<_LTSnippet>& snippet : database->snippets()) {
            list.push_back(snippet->title().toStdString());
        }
        return list;
    }

    QString textOf(std::size_t index) const {
        return std::dynamic_pointer_cast<Snippet>(database->snippets()[index])->text();
    }

    /// The system's own words for an error, in the language of the person who runs the test.
    static QString systemReason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

    QTemporaryDir folder;
};

TEST_F(SnippetImporterTest, TakesAFileAsItIs) {
    const SnippetImportResult result =
        import({write(QStringLiteral("note.txt"), "one\r\n\tzwei ß \xF0\x9F\x98\x80\n\n")});

    EXPECT_EQ(result.importedCount, 1U);
    EXPECT_TRUE(result.refusals.empty());
    EXPECT_THAT(titles(), ElementsAre("note.txt"));
    EXPECT_EQ(textOf(0), QStringLiteral("one\r\n\tzwei ß \U0001F600\n\n"));
}

TEST_F(SnippetImporterTest, DropsAByteOrderMark) {
    import({write(QStringLiteral("note.txt"), "\xEF\xBB\xBFtext")});
    ASSERT_EQ(database->snippets().count(), 1U);
    EXPECT_EQ(textOf(0), QStringLiteral("text"));
}

TEST_F(SnippetImporterTest, RefusesAFileWithANULByte) {
    using namespace std::string_view_literals;
    EXPECT_EQ(refusalOf("text\0more"sv), "is not text: NUL byte at offset 4");
}

TEST_F(SnippetImporterTest, RefusesWhatIsNotUTF8) {
    EXPECT_EQ(refusalOf("gr\xFC\xDF"), "is not UTF-8 text: invalid byte 0xfc at offset 2");
    EXPECT_EQ(refusalOf("ends in \xE2\x82"), "is not UTF-8 text: invalid byte 0xe2 at offset 8");
    EXPECT_EQ(refusalOf("overlong \xC0\xAF"), "is not UTF-8 text: invalid byte 0xc0 at offset 9");
    EXPECT_EQ(refusalOf("overlong \xE0\x80\xAF"), "is not UTF-8 text: invalid byte 0xe0 at offset 9");
    EXPECT_EQ(refusalOf("surrogate \xED\xA0\x80"), "is not UTF-8 text: invalid byte 0xed at offset 10");
    EXPECT_EQ(refusalOf("too high \xF4\x90\x80\x80"), "is not UTF-8 text: invalid byte 0xf4 at offset 9");
    EXPECT_EQ(refusalOf("alone \x80"), "is not UTF-8 text: invalid byte 0x80 at offset 6");
    EXPECT_EQ(refusalOf("cut \xC3("), "is not UTF-8 text: invalid byte 0xc3 at offset 4");
}

TEST_F(SnippetImporterTest, RefusesAnEmptyFile) {
    EXPECT_EQ(refusalOf(""), "is empty");
    EXPECT_EQ(refusalOf("\xEF\xBB\xBF"), "is empty");
}

TEST_F(SnippetImporterTest, TakesOneMebibyteAndRefusesMore) {
    std::string bytes(SnippetImporter::largestFile, 'x');
    EXPECT_EQ(import({write(QStringLiteral("large.txt"), bytes)}).importedCount, 1U);
    bytes += 'x';
    EXPECT_THAT(refusalOf(bytes), testing::StartsWith("is larger than 1 MiB"));
}

TEST_F(SnippetImporterTest, RefusesAMissingFile) {
    const QString missing = path(QStringLiteral("missing.txt"));
    const SnippetImportResult result = import({missing, write(QStringLiteral("there.txt"), "text")});

    EXPECT_EQ(result.importedCount, 1U);
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().name, missing);
    EXPECT_EQ(result.refusals.front().reason, QStringLiteral("cannot open: ") + systemReason(ENOENT));
}

TEST_F(SnippetImporterTest, RefusesWhatCannotBeRead) {
    // Every user may open this file, which calls itself a regular one, and none can read its first page.
    const SnippetImportResult result = import({QStringLiteral("/proc/self/mem")});
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().description(),
              QStringLiteral("/proc/self/mem: cannot read: ") + systemReason(EIO));
}

TEST_F(SnippetImporterTest, RefusesAFileWithoutAnEndAndGoesOn) {
    const QString endless = path(QStringLiteral("folder/a.txt"));
    write(QStringLiteral("folder/b.txt"), "text");
    ASSERT_TRUE(QFile::link(QString::fromLatin1(MadeUpFile::path), endless));
    const MadeUpFile file;
    const SnippetImportResult result = import({path(QStringLiteral("folder"))});
    EXPECT_THAT(titles(), ElementsAre("b.txt"));
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().description(),
              endless + QStringLiteral(": cannot read so much: ") + systemReason(EFBIG))
        << "and not all of it first";
}

TEST_F(SnippetImporterTest, RefusesAPipeWithoutWaitingForIt) {
    const QString pipe = path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const SnippetImportResult result = import({folder.path()});
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().name, pipe);
}

TEST_F(SnippetImporterTest, RefusalIsOneLineWhateverTheName) {
    const SnippetImportRefusal refusal{.name = QStringLiteral("a\nb\x1b"), .reason = QStringLiteral("is empty")};
    EXPECT_EQ(refusal.description(), QStringLiteral("a\uFFFDb\uFFFD: is empty"));
}

TEST_F(SnippetImporterTest, ImportsAFolderInTheOrderOfItsNames) {
    write(QStringLiteral("notes/b.txt"), "b");
    write(QStringLiteral("notes/a/z.txt"), "z");
    write(QStringLiteral("notes/a/y.txt"), "y");
    write(QStringLiteral("notes/.hidden"), "hidden");
    write(QStringLiteral("notes/picture.png"), "\x89PNG");

    const SnippetImportResult result = import({path(QStringLiteral("notes"))});

    EXPECT_THAT(titles(), ElementsAre(".hidden", "a/y.txt", "a/z.txt", "b.txt"));
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().name, path(QStringLiteral("notes/picture.png")));
}

TEST_F(SnippetImporterTest, PassesOverHiddenFoldersAndBuildFolders) {
    write(QStringLiteral("project/.git/config"), "config");
    write(QStringLiteral("project/build/log.txt"), "log");
    write(QStringLiteral("project/source/build/log.txt"), "log");
    write(QStringLiteral("project/source/main.txt"), "main");

    const SnippetImportResult result = import({path(QStringLiteral("project"))});

    EXPECT_THAT(titles(), ElementsAre("source/main.txt"));
    EXPECT_TRUE(result.refusals.empty());
}

TEST_F(SnippetImporterTest, ImportsABuildFolderThatIsGivenItself) {
    write(QStringLiteral("build/log.txt"), "log");
    import({path(QStringLiteral("build"))});
    EXPECT_THAT(titles(), ElementsAre("log.txt"));
}

TEST_F(SnippetImporterTest, IsNotTrappedByACircleOfLinks) {
    write(QStringLiteral("circle/note.txt"), "note");
    ASSERT_TRUE(QFile::link(path(QStringLiteral("circle")), path(QStringLiteral("circle/again"))));
    import({path(QStringLiteral("circle"))});
    EXPECT_THAT(titles(), ElementsAre("note.txt"));
}

TEST_F(SnippetImporterTest, RefusesAFolderWithoutFiles) {
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("empty/.git"))));
    const SnippetImportResult result = import({path(QStringLiteral("empty"))});
    ASSERT_EQ(result.refusals.size(), 1U);
    EXPECT_EQ(result.refusals.front().reason, QStringLiteral("is a folder without files"));
}

TEST_F(SnippetImporterTest, ABatchGetsIdentitiesOneSecondApartGoingBack) {
    for (int index = 0; index < 5; ++index) {
        write(QStringLiteral("batch/%1.txt").arg(index), "text");
    }
    const double before = NSDate::date().timeIntervalSince1970();
    import({path(QStringLiteral("batch"))});
    const double after = NSDate::date().timeIntervalSince1970();

    ASSERT_EQ(database->snippets().count(), 5U);
    const double first = database->snippets()[0]->snippetID()->timeIntervalSince1970();
    EXPECT_GE(first, before);
    EXPECT_LE(first, after);
    for (std::size_t index = 1; index < 5; ++index) {
        EXPECT_EQ(database->snippets()[index]->snippetID(), dateAt(first - static_cast<double>(index)));
    }
}

} // namespace
