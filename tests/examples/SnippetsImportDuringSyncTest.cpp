// SPDX-License-Identifier: MIT
// Imports while a sync holds back what is added.
#include "SnippetsSyncTestSupport.h"

#include <SnippetExporter.h>
#include <SnippetImporter.h>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class ImportDuringSync : public SyncingProgram {
protected:
    QString write(const QString& fileName) const {
        QFile file(folder.filePath(fileName));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
        return file.fileName();
    }

    QString writeList(const std::vector<std::shared_ptr<Snippet>>& snippets) const {
        const QString path = folder.filePath(QStringLiteral("list.plist"));
        EXPECT_EQ(exportToPropertyList(snippets, path).problem, QString());
        return path;
    }

    void beginSync() {
        switchOn();
        manager().sync(SnippetsSyncManager::Cause::User);
        ASSERT_TRUE(manager().isSyncInProgress());
    }
    void waitForEnd() {
        EXPECT_TRUE(manager().isSyncInProgress()) << "it holds nothing back any more";
        ASSERT_TRUE(waitForReport(1));
    }

    std::vector<double> identities() const {
        std::vector<double> list;
        for (const std::shared_ptr<_LTSnippet>& snippet : database->snippets()) {
            list.push_back(snippet->snippetID()->timeIntervalSince1970());
        }
        return list;
    }

    QTemporaryDir folder;
    SnippetImporter importer{database};
};

TEST_F(ImportDuringSync, ABatchGetsIdentitiesOneSecondApartGoingBack) {
    QStringList files;
    for (int index = 0; index < 4; ++index) {
        files += write(QString::number(index));
    }
    beginSync();
    EXPECT_EQ(importer.importPaths(files).importedCount, 4U);
    waitForEnd();
    const std::vector<double> given = identities();
    ASSERT_EQ(given.size(), 4U);
    EXPECT_THAT(given, ElementsAre(given[0], given[0] - 1, given[0] - 2, given[0] - 3));
}

TEST_F(ImportDuringSync, AListThatComesTwiceIsTakenOnce) {
    const QString list = writeList({makeSnippet(1.0, "One"), makeSnippet(2.0, "Two")});
    beginSync();
    const SnippetImportResult both = importer.importPaths({list, list});
    EXPECT_EQ(both.importedCount, 2U);
    EXPECT_EQ(both.knownCount, 2U);
    EXPECT_EQ(importer.importPaths({list}).knownCount, 2U) << "in a batch of its own too";
    waitForEnd();
    EXPECT_THAT(identities(), UnorderedElementsAre(1.0, 2.0));
    EXPECT_EQ(importer.importPaths({list}).knownCount, 2U);
}

TEST_F(ImportDuringSync, SnippetsOfOneIdentityGetOnesOfTheirOwn) {
    const QString list = writeList(
        {makeSnippet(9.0, "One"), makeSnippet(9.0, "Two"), makeSnippet(8.0, "Three"), makeSnippet(9.0, "Four")});
    const QString second = folder.filePath(QStringLiteral("other.plist"));
    ASSERT_EQ(exportToPropertyList({makeSnippet(9.0, "Five")}, second).problem, QString());
    beginSync();
    EXPECT_EQ(importer.importPaths({list}).importedCount, 4U);
    EXPECT_EQ(importer.importPaths({second}).importedCount, 1U);
    waitForEnd();
    EXPECT_THAT(identities(), UnorderedElementsAre(9.0, 8.0, 7.0, 6.0, 5.0));
}

TEST_F(ImportDuringSync, WhatIsOnItsWayOutComesBack) {
    const std::shared_ptr<Snippet> snippet = add(5.0, "Back again", "text");
    const QString list = writeList({snippet});
    beginSync();
    database->removeSnippet(snippet);
    EXPECT_EQ(importer.importPaths({list}).importedCount, 1U);
    waitForEnd();
    EXPECT_THAT(texts(), ElementsAre("text"));
}

} // namespace
