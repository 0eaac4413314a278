// SPDX-License-Identifier: MIT
// What the two programs of the benchmark of the example host have in common, so that they differ in what shows and
// searches the texts alone: the texts, what is typed, and the words to the one who measures.
#pragma once

#include "../Figures.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

inline constexpr int measuredSnippets = 10'000;
inline constexpr int measuredRounds = 5;
inline constexpr QSize measuredSize(720, 500);

/// What a person types, letter by letter, and takes back letter by letter: a common word, two words of which the second
/// is rare, and one that is nowhere.
inline const QStringList& measuredSearches() {
    static const QStringList searches{QStringLiteral("meeting"), QStringLiteral("invoice 4711"),
                                      QStringLiteral("über straße"), QStringLiteral("xyzzy")};
    return searches;
}

/// Texts as people keep them: half of them short, a few of some pages; notes, links and code, some with accents.
inline QString measuredText(int number) {
    static constexpr std::array words{
        "the",     "of",        "and",     "meeting", "invoice",  "project",  "please",  "customer", "address",
        "server",  "password",  "reset",   "monday",  "schedule", "report",   "draft",   "version",  "release",
        "budget",  "contract",  "deliver", "team",    "question", "answer",   "regards", "office",   "printer",
        "network", "database",  "backup",  "ticket",  "problem",  "solution", "check",   "update",   "install",
        "window",  "command",   "file",    "folder",  "keyboard", "recipe",   "flour",   "sugar",    "travel",
        "train",   "station",   "hotel",   "booking", "number",   "phone",    "signed",  "attached", "summary",
        "Straße",  "Überblick", "café",    "naïve",   "garçon",   "über",     "größe",   "año"};
    std::minstd_rand random(static_cast<unsigned>(number) * 7919U + 17U);
    const auto below = [&](std::size_t end) { return static_cast<std::size_t>(random()) % end; };
    if (number % 10 == 3) {
        return QStringLiteral("https://example.org/%1/%2?page=%3")
            .arg(QString::fromUtf8(words[below(words.size())]))
            .arg(number)
            .arg(below(100));
    }
    std::lognormal_distribution<double> lengths(5.4, 1.1); // of characters; the median is 220
    const auto length = static_cast<qsizetype>(std::min(lengths(random), 20'000.0));
    QString text;
    text.reserve(length + 32);
    const bool isCode = number % 10 == 7;
    while (text.size() < length) {
        text += QString::fromUtf8(words[below(words.size())]);
        const std::size_t place = below(24);
        if (place == 0) {
            text += isCode ? QStringLiteral("();\n    ") : QStringLiteral(".\n");
        } else if (place == 1) {
            text += QStringLiteral(" %1 ").arg(below(10'000));
        } else {
            text += QLatin1Char(' ');
        }
    }
    return text;
}

inline QString measuredTitle(int number, const QString& text) {
    return QStringLiteral("%1 %2").arg(text.section(QLatin1Char(' '), 0, 2).left(40).simplified()).arg(number);
}

inline void waitUntilExposed(QWidget& window) {
    while (!window.windowHandle() || !window.windowHandle()->isExposed()) {
        QCoreApplication::processEvents();
    }
}

/// Types each search and takes it back, a letter at a time, with `setSearch`, which is to return when the list is
/// painted; tells how long a letter takes, at the median and at the worst, and the first of all.
template <class SetSearch>
void tellSearches(const SetSearch& setSearch) {
    std::vector<double> typing;
    std::vector<double> deleting;
    double first = 0;
    const auto timed = [&](const QString& search) {
        QElapsedTimer clock;
        clock.start();
        setSearch(search);
        return milliseconds(clock);
    };
    for (int round = 0; round < measuredRounds; ++round) {
        for (const QString& search : measuredSearches()) {
            for (qsizetype length = 1; length <= search.size(); ++length) {
                typing.push_back(timed(search.first(length)));
                first = first == 0 ? typing.back() : first;
            }
            for (qsizetype length = search.size() - 1; length >= 0; --length) {
                deleting.push_back(timed(search.first(length)));
            }
        }
    }
    tellMedianAndWorst("type", typing);
    tellMedianAndWorst("delete", deleting);
    tellFigure("first_letter", first);
}
