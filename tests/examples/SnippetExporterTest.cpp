// SPDX-License-Identifier: MIT
// Snippets that go into files, and come back.
#include "../FileDialog.h"
#include "SnippetsWindowHost.h"

#include <SnippetExporter.h>
#include <SnippetImporter.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class SnippetExporterTest : public SnippetsHost {
protected:
    QString path(const char* relative) const { return folder.filePath(QString::fromUtf8(relative)); }

    QByteArray read(const QString& file) const {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file.toStdString();
        return opened.readAll();
    }
    QString write(const char* relative, const QByteArray& bytes) const {
        QFile file(path(relative));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    std::vector<std::shared_ptr<Snippet>> all() const {
        std::vector<std::shared_ptr<Snippet>> snippets;
        for (const std::shared_ptr<_LTSnippet>& record : database->snippets()) {
            snippets.push_back(std::static_pointer_cast<Snippet>(record));
        }
        return snippets;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> list;
        for (const QString& each : QDir(path("texts")).entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
            list.push_back(each.toStdString());
        }
        return list;
    }

    SnippetImportResult import(const QString& file) { return SnippetImporter(database).importPaths({file}); }

    /// Why a property list with this content is refused; nothing of it comes in.
    std::string refusalOf(const QByteArray& content) {
        const std::size_t before = database->snippets().count();
        const SnippetImportResult result = import(write("hostile.plist", content));
        EXPECT_EQ(result.importedCount, 0U);
        EXPECT_EQ(database->snippets().count(), before);
        EXPECT_EQ(result.refusals.size(), 1U);
        return result.refusals.empty() ? "" : result.refusals.front().reason.toStdString();
    }

    QTemporaryDir folder;
};

TEST_F(SnippetExporterTest, EverythingComesBackFromAPropertyList) {
    const std::shared_ptr<Snippet> full = add(1234567.123456789, "Tïtle", "text\r\nwith\tall \x1b[1m of it\n");
    full->noteUse(dateAt(2000000.25));
    full->updateModificationDateWithDate(dateAt(1999999.0625));
    add(5.0, "", "");
    add(7.0, "Plain");
    const std::vector<std::shared_ptr<Snippet>> before = all();
    const SnippetExportResult exported = exportToPropertyList(before, path("list.plist"));
    EXPECT_EQ(exported.problem, QString());
    EXPECT_EQ(exported.count, 3U);
    database->snippets().removeAllObjects();

    const SnippetImportResult result = import(path("list.plist"));
    EXPECT_EQ(result.importedCount, 3U);
    EXPECT_EQ(result.listedCount, 3U);
    EXPECT_TRUE(result.refusals.empty());
    const std::vector<std::shared_ptr<Snippet>> after = all();
    ASSERT_EQ(after.size(), 3U);
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(*after[index]->dictionaryRepresentation(), *before[index]->dictionaryRepresentation());
        EXPECT_EQ(after[index]->snippetID(), before[index]->snippetID());
    }
}

TEST_F(SnippetExporterTest, ThePropertyListIsOneThatOthersRead) {
    add(1.0, "A & <b>");
    ASSERT_EQ(exportToPropertyList(all(), path("list.plist")).problem, QString());
    const QByteArray bytes = read(path("list.plist"));
    EXPECT_TRUE(bytes.startsWith("<?xml"));
    NSError error;
    const auto list = NSPropertyListSerialization::propertyListWithData(
        {bytes.constData(), static_cast<std::size_t>(bytes.size())}, nullptr, &error);
    ASSERT_TRUE(list) << error.localizedDescription.toStdString();
    const auto* snippets = list->as<NSDictionary>()->objectOfType<NSArray>("snippets");
    ASSERT_TRUE(snippets);
    EXPECT_EQ(*snippets->front().as<NSDictionary>()->objectOfType<std::string>("title"), "A & <b>");
}

TEST_F(SnippetExporterTest, WhatIsHereJustSoIsLeftAlone) {
    const std::shared_ptr<Snippet> used = add(1.0, "Used");
    add(2.0, "Changed since");
    used->noteUse(dateAt(50));
    ASSERT_EQ(exportToPropertyList(all(), path("list.plist")).problem, QString());
    *used = *makeSnippet(1.0, "Used");
    all()[1]->setText(QStringLiteral("other"));
    all()[1]->updateModificationDate();
    const SnippetImportResult result = import(path("list.plist"));
    EXPECT_EQ(result.knownCount, 1U);
    EXPECT_EQ(result.importedCount, 1U);
    ASSERT_EQ(all().size(), 3U);
    EXPECT_EQ(used->useCount(), 1) << "but for what is known of its uses";
    EXPECT_EQ(all()[1]->text(), QStringLiteral("other"));
    EXPECT_EQ(all()[2]->text(), QStringLiteral("Text"));
    EXPECT_EQ(all()[2]->snippetID(), dateAt(0.0)) << "the first free date before";
}

TEST_F(SnippetExporterTest, ALaterUseThatIsTakenOverIsKept) {
    const std::shared_ptr<Snippet> used = add(1.0, "Used");
    used->noteUse(dateAt(50));
    ASSERT_EQ(exportToPropertyList(all(), path("list.plist")).problem, QString());
    *used = *makeSnippet(1.0, "Used");
    used->noteUse(dateAt(40));
    database->saveDB();
    EXPECT_EQ(import(path("list.plist")).knownCount, 1U);
    EXPECT_EQ(used->dateOfLastUse(), dateAt(50));
    EXPECT_TRUE(SnippetsDatabase::isDirty());

    database->saveDB();
    EXPECT_EQ(import(path("list.plist")).knownCount, 1U);
    EXPECT_FALSE(SnippetsDatabase::isDirty()) << "there is nothing new in it";
}

TEST_F(SnippetExporterTest, ACopyOfTheDatabaseIsReadToo) {
    add(1.0, "Kept");
    database->saveDB();
    const QString copy = path("copy.plist");
    ASSERT_TRUE(QFile::copy(database->path(), copy));
    database->snippets().removeAllObjects();
    EXPECT_EQ(import(copy).importedCount, 1U);
    EXPECT_EQ(all().front()->title(), QStringLiteral("Kept"));
}

TEST_F(SnippetExporterTest, AListLargerThanATextMayBeIsRead) {
    for (int number = 0; number < 2000; ++number) {
        add(number, "Title", std::string(1000, 'x').c_str());
    }
    ASSERT_EQ(exportToPropertyList(all(), path("list.plist")).problem, QString());
    EXPECT_GT(QFileInfo(path("list.plist")).size(), SnippetImporter::largestFile);
    database->snippets().removeAllObjects();
    EXPECT_EQ(import(path("list.plist")).importedCount, 2000U);
}

TEST_F(SnippetExporterTest, HostileListsGiveALineOfError) {
    const QByteArray head = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>SnippetsFormat</key>";
    const QByteArray foot = "</dict></plist>";
    EXPECT_THAT(refusalOf(head + "<integer>1</integer><key>snippets</key><array><dict>"),
                HasSubstr("is no whole list of snippets: line 1"));
    EXPECT_THAT(refusalOf(head + "<integer>2</integer>" + foot), HasSubstr("its format is 2"));
    EXPECT_THAT(refusalOf(head + "<string>1</string>" + foot), HasSubstr("its format is"));
    EXPECT_THAT(refusalOf(head + "<integer>1</integer>" + foot), HasSubstr("there is no list in it"));
    EXPECT_THAT(refusalOf(head + "<integer>1</integer><key>snippets</key><string>no</string>" + foot),
                HasSubstr("there is no list in it"));
    EXPECT_THAT(refusalOf(head + "<integer>1</integer><key>snippets</key><array><string>no</string></array>" + foot),
                HasSubstr("number 1 in it is no snippet"));
    EXPECT_THAT(
        refusalOf(head +
                  "<integer>1</integer><key>snippets</key><array><true/><dict><key>id</key><true/></dict></array>" +
                  foot),
        HasSubstr("2 in it are no snippets, the first one is number 1"));
    EXPECT_THAT(refusalOf("bplist00SnippetsFormat"), HasSubstr("is no whole list of snippets"));
}

TEST_F(SnippetExporterTest, OddFieldsOfARecordAreLeftOut) {
    const QByteArray list = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>SnippetsFormat</key><integer>1"
                            "</integer><key>snippets</key><array><dict><key>text</key><string>Text</string>"
                            "<key>title</key><integer>4</integer><key>idSeconds</key><real>1e300</real>"
                            "<key>useCount</key><integer>-3</integer></dict></array></dict></plist>";
    EXPECT_EQ(import(write("odd.plist", list)).importedCount, 1U);
    EXPECT_EQ(all().front()->text(), QStringLiteral("Text"));
    EXPECT_EQ(all().front()->useCount(), 0);
    EXPECT_TRUE(all().front()->snippetID()) << "one of its own";
}

TEST_F(SnippetExporterTest, OtherPropertyListsAreTexts) {
    const QByteArray other = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict/></plist>";
    EXPECT_EQ(import(write("other.plist", other)).importedCount, 1U);
    EXPECT_EQ(all().front()->utf8Text(), other);
    const QByteArray note = "In such a file stands SnippetsFormat";
    EXPECT_EQ(import(write("note.txt", note)).importedCount, 1U);
    EXPECT_EQ(all().back()->utf8Text(), note);
}

TEST_F(SnippetExporterTest, AFolderGetsATextFileForEach) {
    add(1.0, "Plain", "text\r\n");
    add(2.0, "a/b: c?", "slash");
    add(3.0, "PLAIN", "again");
    add(4.0, "notes.md", "# Notes");
    add(5.0, "..", "dots");
    add(6.0, "", "");
    const std::shared_ptr<Snippet> dated = add(7.0, "Dated");
    dated->updateModificationDateWithDate(dateAt(1'600'000'000));
    add(8.0, QString(300, QChar(0x1F4A)).toUtf8().constData());
    const SnippetExportResult result = exportToFolder(all(), path("texts"));
    EXPECT_EQ(result.problem, QString());
    EXPECT_EQ(result.count, 8U);
    const std::vector<std::string> files = names();
    ASSERT_EQ(files.size(), 8U);
    EXPECT_THAT(std::vector<std::string>(files.begin(), files.end() - 1),
                UnorderedElementsAre("Plain.txt", "a-b- c-.txt", "PLAIN 2.txt", "notes.md", "Untitled.txt",
                                     "Untitled 2.txt", "Dated.txt"));
    EXPECT_LE(files.back().size(), 200U);
    EXPECT_EQ(read(path("texts/Plain.txt")), "text\r\n");
    EXPECT_EQ(QFileInfo(path("texts/Dated.txt")).lastModified().toSecsSinceEpoch(), 1'600'000'000);
    EXPECT_THAT(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                ElementsAre(QStringLiteral("texts")))
        << "and leaves nothing beside it";
}

TEST_F(SnippetExporterTest, NumbersTellFilesOfOneNameApart) {
    int age = 0;
    for (const char* title : {"A", "a", "A 2", "a 2", "A", "A 4", "A"}) {
        add(++age, title);
    }
    ASSERT_EQ(exportToFolder(all(), path("texts")).count, 7U);
    EXPECT_THAT(names(),
                UnorderedElementsAre("A.txt", "a 2.txt", "A 2 2.txt", "a 2 3.txt", "A 3.txt", "A 4.txt", "A 5.txt"));
}

TEST_F(SnippetExporterTest, EndlessTitlesGiveShortNames) {
    constexpr qsizetype length = 5'000'000;
    EXPECT_EQ(fileNameForTitle(QString(length, QLatin1Char('x'))),
              QString(160, QLatin1Char('x')) + QStringLiteral(".txt"));
    EXPECT_EQ(fileNameForTitle(QLatin1Char('a') + QString(length, QLatin1Char(' ')) + QLatin1Char('b')),
              QStringLiteral("a.txt"));
    QString faces;
    for (int count = 0; count < 1000; ++count) {
        faces += QStringLiteral("\U0001F600");
    }
    for (const char* shift : {"", "x"}) {
        const QString faceName = fileNameForTitle(QLatin1String(shift) + faces);
        EXPECT_EQ(QString::fromUtf8(faceName.toUtf8()), faceName) << "no half of one";
        EXPECT_LE(faceName.toUtf8().size(), 164);
    }
}

TEST_F(SnippetExporterTest, OneFileIsKnownByAllItsNames) {
    ASSERT_TRUE(QDir().mkpath(path("folder")));
    ASSERT_TRUE(QFile::link(path("folder"), path("other")));
    ASSERT_TRUE(QFile::link(QStringLiteral("folder/there"), path("link")));
    for (const bool isThere : {false, true}) {
        if (isThere) {
            write("folder/there", "content");
        }
        for (const char* alias : {"folder/there", "folder/../folder/there", "other/there", "link"}) {
            EXPECT_TRUE(leadToOneFile(path(alias), path("folder/there"))) << alias << ' ' << isThere;
        }
        EXPECT_FALSE(leadToOneFile(path("folder/other"), path("folder/there")));
        EXPECT_FALSE(leadToOneFile(path("there"), path("folder/there")));
    }
    write("there", "content");
    EXPECT_FALSE(leadToOneFile(path("there"), path("folder/there")));
}

TEST_F(SnippetExporterTest, AFolderWithSomethingInItStaysAsItIs) {
    add(1.0, "One");
    ASSERT_TRUE(QDir().mkpath(path("texts")));
    write("texts/mine", "mine");
    const SnippetExportResult result = exportToFolder(all(), path("texts"));
    EXPECT_THAT(result.problem.toStdString(), HasSubstr("texts: "));
    EXPECT_EQ(result.count, 0U);
    EXPECT_THAT(names(), ElementsAre("mine"));
    EXPECT_THAT(exportToFolder(all(), path("nowhere/texts")).problem.toStdString(), HasSubstr("nowhere"));
    EXPECT_THAT(exportToPropertyList(all(), path("nowhere/list.plist")).problem.toStdString(), HasSubstr("nowhere"));
}

class SnippetsExport : public SnippetsWindowHost {
protected:
    const AnimationDurationsForTesting noAnimations{0};
    QTemporaryDir folder;
};

TEST_F(SnippetsExport, AsksForTheFormAndThePlaceAndExportsWhatIsFound) {
    const QString list = folder.filePath(QStringLiteral("list.plist"));
    type("middle");
    whenAsked(Qt::Key_Return);
    {
        Steps steps;
        steps.addForFileDialog([&](QFileDialog& dialog) { enterName(dialog, list); });
        press(Qt::Key_S, Qt::ControlModifier);
    }
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(window->findChild<SnippetsFooter*>()->text(), QStringLiteral("Exported 1 snippet"));
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(list);
    ASSERT_TRUE(content);
    EXPECT_EQ(content->objectOfType<NSArray>("snippets")->size(), 1U);
}

TEST_F(SnippetsExport, TellsWhatCameInFromAList) {
    const QString list = folder.filePath(QStringLiteral("list.plist"));
    std::vector<std::shared_ptr<Snippet>> snippets{window->model().newest(3)};
    ASSERT_EQ(exportToPropertyList(snippets, list).problem, QString());
    database->removeSnippet(snippets.front());
    window->showImportResult(SnippetImporter(database).importPaths({list}));
    EXPECT_EQ(window->findChild<SnippetsFooter*>()->text(), QStringLiteral("Imported 1 snippet, 2 here already"));
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsExport, NothingIsWrittenWhereThatIsCancelled) {
    whenAsked(Qt::Key_Escape);
    window->exportSnippets();
    EXPECT_EQ(questions, 1);
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST_F(SnippetsExport, SaysWhyNothingWasWritten) {
    whenAsked(Qt::Key_Return);
    {
        Steps steps;
        steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("/proc/list")); });
        window->exportSnippets();
    }
    auto* const bar = window->findChild<MessageBar*>(QStringLiteral("messageBar"));
    EXPECT_TRUE(bar->isVisible());
    EXPECT_THAT(bar->text().toStdString(), HasSubstr("Not exported: /proc/list.plist"));
}

TEST_F(SnippetsExport, TheDatabaseItselfIsNotReplaced) {
    database->saveDB();
    const std::optional<NSDictionary> before = NSDictionary::dictionaryWithContentsOfFile(database->path());
    type("middle");
    whenAsked(Qt::Key_Return);
    {
        Steps steps;
        steps.addForFileDialog([&](QFileDialog& dialog) { enterName(dialog, database->path()); });
        steps.addForQuestion([](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
        window->exportSnippets();
    }
    EXPECT_EQ(window->findChild<MessageBar*>(QStringLiteral("messageBar"))->text(),
              QStringLiteral("Not exported: %1: is the database itself").arg(database->path()));
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(database->path()), before);
}

} // namespace
