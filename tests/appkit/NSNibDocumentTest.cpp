// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNibDocument.h>

#include <QFile>

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

} // namespace

TEST(NibDocument, RefusesElementsThatLieTooDeep) {
    constexpr int depth = 10'000;
    QByteArray content("<ui version=\"4.0\">");
    for (int count = 0; count < depth; ++count) {
        content += "<widget class=\"QWidget\">";
    }
    for (int count = 0; count < depth; ++count) {
        content += "</widget>";
    }
    content += "</ui>";
    EXPECT_THAT(NibDocument::read(content).fault.toStdString(), HasSubstr("line 1, column "));
    EXPECT_THAT(NibDocument::read(content).fault.toStdString(), HasSubstr("elements lie more than 250 deep"));
}

TEST(NibDocument, TakesWhatAPersonDraws) {
    QByteArray content("<ui version=\"4.0\">");
    for (int count = 0; count < 100; ++count) {
        content += "<widget class=\"QWidget\">";
    }
    for (int count = 0; count < 100; ++count) {
        content += "</widget>";
    }
    const NibDocument document = NibDocument::read(content + "</ui>");
    EXPECT_TRUE(document.fault.isNull()) << document.fault.toStdString();
    EXPECT_EQ(document.objects.size(), 100U);
}

TEST(NibDocument, FindsAFaultInEveryFileThatWasCutOff) {
    const QByteArray content = contentOf(QStringLiteral(":/nibs/Panel.ui")).trimmed();
    ASSERT_TRUE(NibDocument::read(content).fault.isNull());
    for (qsizetype length = 0; length < content.size(); ++length) {
        EXPECT_FALSE(NibDocument::read(content.left(length)).fault.isNull()) << length;
    }
}

TEST(NibDocument, RefusesWhatFollowsTheForm) {
    const QByteArray form("<ui version=\"4.0\"><widget class=\"QWidget\"/></ui>");
    EXPECT_TRUE(NibDocument::read(form + "\n").fault.isNull());
    EXPECT_FALSE(NibDocument::read(form + form).fault.isNull());
}

TEST(NibDocument, RefusesAttributesThatAnElementDoesNotHave) {
    const QByteArray content("<ui version=\"4.0\"><widget class=\"QWidget\" colour=\"red\"/></ui>");
    EXPECT_THAT(NibDocument::read(content).fault.toStdString(),
                HasSubstr("an element \"widget\" has an attribute \"colour\""));
}

TEST(NibDocument, RefusesEntitiesThatGrow) {
    QByteArray content("<!DOCTYPE ui [<!ENTITY a \"aaaaaaaaaaaaaaaa\">");
    for (char name = 'b'; name < 'k'; ++name) {
        const char before = static_cast<char>(name - 1);
        content += QByteArray("<!ENTITY ") + name + " \"";
        for (int count = 0; count < 16; ++count) {
            content += QByteArray("&") + before + ";";
        }
        content += "\">";
    }
    content += "]><ui version=\"4.0\"><widget class=\"QLabel\"><property name=\"text\"><string>&j;</string></property>"
               "</widget></ui>";
    EXPECT_FALSE(NibDocument::read(content).fault.isNull());
}
