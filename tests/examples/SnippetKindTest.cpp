// SPDX-License-Identifier: MIT
#include <SnippetKind.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace {

struct TextOfKind {
    const char* text;
    SnippetKind kind;
};

template <std::size_t count>
void expectTold(const TextOfKind (&texts)[count]) {
    for (const TextOfKind& each : texts) {
        EXPECT_EQ(nameOfKind(kindOfText(QString::fromUtf8(each.text))).toStdString(),
                  nameOfKind(each.kind).toStdString())
            << each.text;
    }
}

constexpr TextOfKind links[] = {
    {"https://example.org/a?b=c#d", SnippetKind::Link},
    {"  http://localhost:8080 \n", SnippetKind::Link},
    {"ssh://host/path", SnippetKind::Link},
    {"file:///etc/hosts", SnippetKind::Link},
    {"www.example.org/page", SnippetKind::Link},
    {"https://user@example.org/", SnippetKind::Link},
    {"HTTPS://EXAMPLE.ORG", SnippetKind::Link},
};
constexpr TextOfKind mailAddresses[] = {
    {"someone@example.org", SnippetKind::MailAddress},
    {"mailto:first.last+tag@mail.example.co", SnippetKind::MailAddress},
};
constexpr TextOfKind colors[] = {
    {"#fff", SnippetKind::Color},
    {"#1E2023", SnippetKind::Color},
    {"#1e2023cc", SnippetKind::Color},
    {"rgb(30, 32, 35)", SnippetKind::Color},
    {"hsla(120deg 50% 50% / 0.4)", SnippetKind::Color},
};
constexpr TextOfKind paths[] = {
    {"/etc/passwd", SnippetKind::Path},
    {"~/My Documents/letter.txt", SnippetKind::Path},
    {"../up/one", SnippetKind::Path},
    {"C:\\Windows\\System32", SnippetKind::Path},
};
constexpr TextOfKind code[] = {
    {"#!/bin/sh\necho hello there", SnippetKind::Code},
    {"#include <vector>\n\nint main() {\n    return 0;\n}\n", SnippetKind::Code},
    {"def twice(x):\n    return 2 * x\n", SnippetKind::Code},
    {"{\n  \"a\": 1,\n  \"b\": [2]\n}\n", SnippetKind::Code},
    {"SELECT name FROM people WHERE age > 3", SnippetKind::Code},
    {"// twice\nx = f(x);", SnippetKind::Code},
    {"add_library(one STATIC\n  two.cpp\n)\ntarget_link_libraries(one three)\n", SnippetKind::Code},
};
constexpr TextOfKind plainTexts[] = {
    {"", SnippetKind::Text},
    {"A sentence, and no more.", SnippetKind::Text},
    {"See https://example.org for more", SnippetKind::Text},
    {"https://one.example\nhttps://two.example", SnippetKind::Text},
    {"ask someone@example.org", SnippetKind::Text},
    {"#hashtag", SnippetKind::Text},
    {"/me waves", SnippetKind::Text},
    {"Dear all,\n\nif you come (we hope so), bring two:\n- bread\n- wine\n\nYours; truly\n", SnippetKind::Text},
    {"@", SnippetKind::Text},
};

TEST(SnippetKind, ALinkIsOneAddressAlone) {
    expectTold(links);
}

TEST(SnippetKind, AMailAddressIsOneAlone) {
    expectTold(mailAddresses);
}

TEST(SnippetKind, AColorIsWrittenAsOnTheWeb) {
    expectTold(colors);
}

TEST(SnippetKind, APathBeginsAtARoot) {
    expectTold(paths);
}

TEST(SnippetKind, CodeIsWrittenForMachines) {
    expectTold(code);
}

TEST(SnippetKind, AllElseIsText) {
    expectTold(plainTexts);
}

TEST(SnippetKind, OfALongTextIsToldByItsBeginning) {
    QString text = QStringLiteral("int main();\n").repeated(1000) + QStringLiteral("and words\n").repeated(9000);
    EXPECT_EQ(kindOfText(text), SnippetKind::Code);
    EXPECT_EQ(kindOfText(QStringLiteral("https://") + QString(100'000, QLatin1Char('x'))), SnippetKind::Text);
}

} // namespace
