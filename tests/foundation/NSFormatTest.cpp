// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSFormat.h>

#include <array>
#include <bit>
#include <clocale>
#include <limits>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace {

struct Snippet {
    QString description() const {
        ++timesAsked;
        return title;
    }
    QString title = QStringLiteral("a snippet");
    mutable int timesAsked = 0;
};

struct NamedSnippet : Snippet {};

struct Plain {};

enum Plainly { PlainlyTwo = 2 };
enum class Scoped { One };

/// Puts a locale in force for the whole process while it lives.
class ProcessLocale {
public:
    explicit ProcessLocale(const char* name)
        : m_previous(std::setlocale(LC_ALL, nullptr)), m_isThere(std::setlocale(LC_ALL, name) != nullptr) {}
    ProcessLocale(const ProcessLocale&) = delete;
    ProcessLocale& operator=(const ProcessLocale&) = delete;
    ~ProcessLocale() { std::setlocale(LC_ALL, m_previous.c_str()); }

    [[nodiscard]] bool isThere() const { return m_isThere; }

private:
    std::string m_previous;
    bool m_isThere;
};

template <class... Arguments>
QString unchecked(std::string_view format, const Arguments&... arguments) {
    return NSStringWithFormatArguments(format, NSMakeFormatArguments(arguments...));
}

/// What the C library prints in the C locale, which is what the kit has to print.
template <class... Arguments>
QString printed(const char* format, Arguments... arguments) {
    char buffer[512];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(buffer, sizeof buffer, format, arguments...);
#pragma GCC diagnostic pop
    return QString::fromLatin1(buffer, length);
}

} // namespace

static_assert(NSFormatFitsArguments<>("plain text, 100%%"));
static_assert(NSFormatFitsArguments<int, unsigned, short, bool, Plainly>("%d %u %x %X %o"));
static_assert(NSFormatFitsArguments<long, unsigned long long, std::size_t, std::ptrdiff_t>("%ld %llu %zu %td"));
static_assert(NSFormatFitsArguments<long, long>("%qd %ji"));
static_assert(NSFormatFitsArguments<int, signed char>("%hd %hhx"));
static_assert(NSFormatFitsArguments<double, float, double, long double>("%f %e %.3lg %La"));
static_assert(NSFormatFitsArguments<const char*, char*, std::string, char[4]>("%s %s %s %.2s"));
static_assert(NSFormatFitsArguments<char, char32_t>("%c %lc"));
static_assert(NSFormatFitsArguments<const void*, Plain*, std::nullptr_t>("%p %p %p"));
static_assert(NSFormatFitsArguments<int, int, double>("%-*.*f"));
static_assert(NSFormatFitsArguments<QString, std::string, std::string_view, const char*, char[3]>("%@%@%@%@%@"));
static_assert(NSFormatFitsArguments<NSDate, NSPropertyList, NSDictionary, NSArray, NSData>("%@%@%@%@%@"));
static_assert(NSFormatFitsArguments<int, double, bool, long, float>("%@%@%@%@%@"));
static_assert(NSFormatFitsArguments<std::optional<QString>, std::optional<int>, std::nullptr_t>("%@%@%@"));
static_assert(NSFormatFitsArguments<Snippet, Snippet*, const Snippet*, std::shared_ptr<const Snippet>,
                                    std::unique_ptr<Snippet>>("%@%@%@%@%@"));

static_assert(!NSFormatFitsArguments<>("%d"));
static_assert(!NSFormatFitsArguments<int>("no conversion"));
static_assert(!NSFormatFitsArguments<int, int>("%d"));
static_assert(!NSFormatFitsArguments<double>("%d"));
static_assert(!NSFormatFitsArguments<long>("%d"));
static_assert(!NSFormatFitsArguments<int>("%ld"));
static_assert(!NSFormatFitsArguments<int>("%f"));
static_assert(!NSFormatFitsArguments<long double>("%f"));
static_assert(!NSFormatFitsArguments<double>("%Lf"));
static_assert(!NSFormatFitsArguments<int>("%s"));
static_assert(!NSFormatFitsArguments<QString>("%s"));
static_assert(!NSFormatFitsArguments<int>("%p"));
static_assert(!NSFormatFitsArguments<Plain>("%@"));
static_assert(!NSFormatFitsArguments<Plain*>("%@"));
static_assert(!NSFormatFitsArguments<Scoped>("%d"));
static_assert(!NSFormatFitsArguments<double, double>("%*f"));
static_assert(!NSFormatFitsArguments<int*>("%n"));
static_assert(!NSFormatFitsArguments<int>("%y"));
static_assert(!NSFormatFitsArguments<int>("%"));
static_assert(!NSFormatFitsArguments<int>("%l"));
static_assert(!NSFormatFitsArguments<int>("%Ld"));
static_assert(std::is_constructible_v<NSFormatString<int>, const char (&)[3]>);

TEST(NSFormat, LeavesTextAsItIs) {
    EXPECT_EQ(NSStringWithFormat("Grüße, 100%%"), QStringLiteral("Grüße, 100%"));
    EXPECT_EQ(NSStringWithFormat(""), QString());
}

TEST(NSFormat, PrintsIntegersOfEveryLength) {
    EXPECT_EQ(NSStringWithFormat("%d %i %u", -1, 2, 3000000000U), QStringLiteral("-1 2 3000000000"));
    EXPECT_EQ(NSStringWithFormat("%x %X %o", 255, 255, 8), QStringLiteral("ff FF 10"));
    EXPECT_EQ(NSStringWithFormat("%x %lx", -1, -1L), QStringLiteral("ffffffff ffffffffffffffff"));
    EXPECT_EQ(NSStringWithFormat("%hd %hhd %hhu", 70000, 200, 511), QStringLiteral("4464 -56 255"));
    EXPECT_EQ(NSStringWithFormat("%lld %llu", std::numeric_limits<long long>::min(),
                                 std::numeric_limits<unsigned long long>::max()),
              QStringLiteral("-9223372036854775808 18446744073709551615"));
    EXPECT_EQ(NSStringWithFormat("%zu %td %jd %qd", std::size_t{1}, std::ptrdiff_t{-2}, std::intmax_t{3}, 4LL),
              QStringLiteral("1 -2 3 4"));
    EXPECT_EQ(NSStringWithFormat("%d %d", true, PlainlyTwo), QStringLiteral("1 2"));
}

TEST(NSFormat, FormatsNumbersAsPrintfDoes) {
    for (const char* format : {"%d", "%5d", "%-5d|", "%05d", "%+d", "% d", "%.3d", "%8.3d", "%x", "%#x", "%#o"}) {
        for (const int number : {0, 42, -42, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(unchecked(format, number), printed(format, number)) << format;
        }
    }
    for (const char* format : {"%f", "%F", "%e", "%E", "%g", "%G", "%a", "%A", "%10.2f", "%-10.2f|", "%010.2f", "%+.0f",
                               "%#.0f", "%.20f", "%.17g", "%.0e", "%lf"}) {
        for (const double number :
             {0.0, -0.0, 0.1, 2.5, -1234567.891, 1e300, 5e-324, std::numeric_limits<double>::infinity()}) {
            EXPECT_EQ(unchecked(format, number), printed(format, number)) << format;
        }
    }
    EXPECT_EQ(NSStringWithFormat("%.21Lg", 0.1L), printed("%.21Lg", 0.1L));
}

TEST(NSFormat, TakesWidthAndPrecisionFromTheArguments) {
    EXPECT_EQ(NSStringWithFormat("%*d|%-*d|%*d", 4, 1, 4, 2, -4, 3), QStringLiteral("   1|2   |3   "));
    EXPECT_EQ(NSStringWithFormat("%.*f|%.*f", 1, 0.25, -1, 0.25), QStringLiteral("0.2|0.250000"));
    EXPECT_EQ(NSStringWithFormat("%*.*s|", 5, 2, "abc"), QStringLiteral("   ab|"));
}

TEST(NSFormat, PadsAndCutsText) {
    EXPECT_EQ(NSStringWithFormat("%5@|%-5@|%.2@", "ab", "ab", "abc"), QStringLiteral("   ab|ab   |ab"));
    EXPECT_EQ(NSStringWithFormat("%5s|%-5s|%.2s", "ab", "ab", "abc"), QStringLiteral("   ab|ab   |ab"));
    EXPECT_EQ(NSStringWithFormat("%4@|", QStringLiteral("ü")), QStringLiteral("   ü|"));
    EXPECT_EQ(NSStringWithFormat("%.2@|", QStringLiteral("a😀")), QStringLiteral("a|"));
}

TEST(NSFormat, ReadsNoFurtherThanThePrecision) {
    const std::array<char, 3> unterminated{'a', 'b', 'c'};
    EXPECT_EQ(NSStringWithFormat("%.3s", unterminated.data()), QStringLiteral("abc"));
    const std::string text(20000, 'x');
    EXPECT_EQ(NSStringWithFormat("%.*s", 15000, text).size(), 15000);
}

TEST(NSFormat, PrintsCharacters) {
    EXPECT_EQ(NSStringWithFormat("%c%3c", 'a', 98), QStringLiteral("a  b"));
    EXPECT_EQ(NSStringWithFormat("%lc%lc", U'😀', u'ü'), QStringLiteral("😀ü"));
    EXPECT_EQ(NSStringWithFormat("%c", '\xFC'), QString(QChar(QChar::ReplacementCharacter)));
    EXPECT_EQ(NSStringWithFormat("%lc", char32_t{0xD800}), QString(QChar(QChar::ReplacementCharacter)));
    EXPECT_EQ(NSStringWithFormat("%lc", char32_t{0x110000}), QString(QChar(QChar::ReplacementCharacter)));
}

TEST(NSFormat, PrintsAddresses) {
    const void* const address = std::bit_cast<const void*>(std::uintptr_t{0xBEEF});
    EXPECT_EQ(NSStringWithFormat("%p|%8p", address, address), QStringLiteral("0xbeef|  0xbeef"));
    EXPECT_EQ(NSStringWithFormat("%p", nullptr), QStringLiteral("0x0"));
    const Snippet snippet;
    EXPECT_EQ(NSStringWithFormat("%p", &snippet), printed("%p", static_cast<const void*>(&snippet)));
    EXPECT_EQ(snippet.timesAsked, 0);
}

TEST(NSFormat, ReplacesWhatIsNotUtf8) {
    const QString expected = QStringLiteral("a") + QChar(QChar::ReplacementCharacter) + QStringLiteral("b");
    EXPECT_EQ(NSStringWithFormat("%s", "a\xFF"
                                       "b"),
              expected);
    EXPECT_EQ(NSStringWithFormat("%@", std::string("a\xFF"
                                                   "b")),
              expected);
    EXPECT_EQ(NSStringWithFormat("a\xFF"
                                 "b"),
              expected);
}

TEST(NSFormat, PrintsStringsOfEveryKind) {
    EXPECT_EQ(NSStringWithFormat("%@ %@ %@ %@ %@", QStringLiteral("ä"), std::string("ö"), std::string_view("ü"), "ß",
                                 QLatin1String("x")),
              QStringLiteral("ä ö ü ß x"));
    EXPECT_EQ(NSStringWithFormat("<%@%@%@%@>", QStringLiteral(""), std::string(), std::string_view(), ""),
              QStringLiteral("<>"));
    EXPECT_EQ(NSStringWithFormat("%s %s", std::string("a"), std::string_view("b")), QStringLiteral("a b"));
}

TEST(NSFormat, PrintsNumbersUnderAtAsTheyRead) {
    EXPECT_EQ(NSStringWithFormat("%@ %@ %@ %@", 7, -7L, 7U, std::numeric_limits<std::uint64_t>::max()),
              QStringLiteral("7 -7 7 18446744073709551615"));
    EXPECT_EQ(NSStringWithFormat("%@ %@", true, false), QStringLiteral("1 0"));
    EXPECT_EQ(NSStringWithFormat("%@ %@ %@", 0.5, 1.0, 0.1F), QStringLiteral("0.5 1 0.1"));
    EXPECT_EQ(NSStringWithFormat("%.3f", 0.1F), QStringLiteral("0.100"));
}

TEST(NSFormat, PrintsADateInUtcWithWholeSeconds) {
    EXPECT_EQ(NSStringWithFormat("%@", NSDate::dateWithTimeIntervalSince1970(1795176000.75)),
              QStringLiteral("2026-11-20 12:00:00 +0000"));
}

TEST(NSFormat, PrintsPropertyListsByTheirDescription) {
    const NSDictionary dictionary{{"key", "value"}};
    EXPECT_EQ(NSStringWithFormat("%@", dictionary), QStringLiteral("{\n    key = value;\n}"));
    EXPECT_EQ(NSStringWithFormat("%@", &dictionary), NSPropertyList(dictionary).description());
    EXPECT_EQ(NSStringWithFormat("%@", dictionary.objectForKey("key")), QStringLiteral("value"));
    const NSArray array{1, 2};
    EXPECT_EQ(NSStringWithFormat("%@", array), NSPropertyList(array).description());
}

TEST(NSFormat, AsksObjectsForTheirDescription) {
    const NamedSnippet snippet;
    const auto shared = std::make_shared<Snippet>();
    const auto unique = std::make_unique<const Snippet>();
    EXPECT_EQ(NSStringWithFormat("%@, %@, %@, %@", snippet, &snippet, shared, unique),
              QStringLiteral("a snippet, a snippet, a snippet, a snippet"));
}

TEST(NSFormat, PrintsNullForNilOfEveryKind) {
    const Snippet* const pointer = nullptr;
    const char* const text = nullptr;
    EXPECT_EQ(
        NSStringWithFormat("%@ %@ %@ %@", pointer, std::shared_ptr<Snippet>(), std::unique_ptr<Snippet>(), nullptr),
        QStringLiteral("(null) (null) (null) (null)"));
    EXPECT_EQ(NSStringWithFormat("%@ %@ %@ %s", QString(), std::optional<int>(), text, text),
              QStringLiteral("(null) (null) (null) (null)"));
    EXPECT_EQ(NSStringWithFormat("%8@|", nullptr), QStringLiteral("  (null)|"));
    Snippet withoutTitle;
    withoutTitle.title = QString();
    EXPECT_EQ(NSStringWithFormat("%@", withoutTitle), QStringLiteral("(null)"));
}

TEST(NSFormat, PrintsWhatAnOptionalHolds) {
    EXPECT_EQ(NSStringWithFormat("%@ %@", std::optional<int>(3), std::optional<QString>(QStringLiteral("x"))),
              QStringLiteral("3 x"));
}

TEST(NSFormat, AsksForDescriptionsOnlyWhileFormatting) {
    const Snippet snippet;
    const NSFormatArguments arguments = NSMakeFormatArguments(snippet, snippet);
    EXPECT_EQ(snippet.timesAsked, 0);
    EXPECT_EQ(NSStringWithFormatArguments("%@", arguments), QStringLiteral("a snippet"));
    EXPECT_EQ(snippet.timesAsked, 1);
}

TEST(NSFormat, PrintsNullForAMissingArgument) {
    EXPECT_EQ(unchecked("%@ %d %s %f %8@"), QStringLiteral("(null) (null) (null) (null)   (null)"));
    EXPECT_EQ(unchecked("%d %d", 1), QStringLiteral("1 (null)"));
    EXPECT_EQ(unchecked("%*d", 5), QStringLiteral("(null)"));
}

TEST(NSFormat, LeavesSurplusArgumentsOut) {
    EXPECT_EQ(unchecked("%d", 1, 2, "three"), QStringLiteral("1"));
}

TEST(NSFormat, PrintsTheBitsOfADoubleUnderAnIntegerConversion) {
    const double seconds = 1732147200.123;
    const auto bits = std::bit_cast<std::uint64_t>(seconds);
    EXPECT_EQ(unchecked("Removed %d from DB", seconds),
              QStringLiteral("Removed %1 from DB").arg(static_cast<std::int32_t>(bits)));
    EXPECT_EQ(unchecked("%u", seconds), QString::number(static_cast<std::uint32_t>(bits)));
    EXPECT_EQ(unchecked("%lld", seconds), QString::number(static_cast<std::int64_t>(bits)));
}

TEST(NSFormat, PrintsTheNumberOfAnIntegerUnderARealConversion) {
    EXPECT_EQ(unchecked("%.1f %g", 3, -4L), QStringLiteral("3.0 -4"));
}

TEST(NSFormat, PrintsMismatchedArgumentsAsAtWould) {
    const Snippet snippet;
    EXPECT_EQ(unchecked("%d %f %s %p", "text", snippet, 42, 0.5), QStringLiteral("text a snippet 42 0.5"));
    EXPECT_EQ(unchecked("%d %s", nullptr, snippet), QStringLiteral("(null) a snippet"));
    EXPECT_EQ(unchecked("%*d", "wide", 7), QStringLiteral("7"));
}

TEST(NSFormat, LeavesWhatIsNoConversionAsItIs) {
    EXPECT_EQ(unchecked("100% yes %y %"), QStringLiteral("100% yes %y %"));
    EXPECT_EQ(unchecked("%-5y%d", 1), QStringLiteral("%-5y1"));
    EXPECT_EQ(unchecked("%n%lp%d", 1), QStringLiteral("%n%lp1"));
    EXPECT_EQ(unchecked("%Ld%d", 1), QStringLiteral("%Ld1"));
}

TEST(NSFormat, LimitsWidthAndPrecision) {
    EXPECT_EQ(unchecked("%2147483647d", 1).size(), VXFormat::largestMeasure);
    EXPECT_EQ(unchecked("%99999999999999999999@", 1).size(), VXFormat::largestMeasure);
    EXPECT_EQ(unchecked("%*d", std::numeric_limits<int>::min(), 1).size(), VXFormat::largestMeasure);
    EXPECT_EQ(unchecked("%.99999999f", 0.0).size(), 2 + VXFormat::largestMeasure);
}

class NSFormatUnderLocale : public testing::TestWithParam<const char*> {};

TEST_P(NSFormatUnderLocale, PrintsNumbersAsUnderTheCLocale) {
    const ProcessLocale locale(GetParam());
    if (!locale.isThere()) {
        GTEST_SKIP() << "This machine has no locale " << GetParam();
    }
    EXPECT_EQ(QString::fromUtf8(std::localeconv()->decimal_point), QStringLiteral(","));
    EXPECT_EQ(NSStringWithFormat("%.2f %g %e %a %Lf", 1234.5, 0.5, 0.5, 0.5, 0.5L),
              QStringLiteral("1234.50 0.5 5.000000e-01 0x1p-1 0.500000"));
    EXPECT_EQ(NSStringWithFormat("%'d %d %X", 1234567, 1234567, 0xABCDEF), QStringLiteral("1234567 1234567 ABCDEF"));
    EXPECT_EQ(NSStringWithFormat("%@ %@", 1234.5, NSDate::dateWithTimeIntervalSince1970(0)),
              QStringLiteral("1234.5 1970-01-01 00:00:00 +0000"));
    EXPECT_EQ(QString::fromUtf8(std::localeconv()->decimal_point), QStringLiteral(","));
}

INSTANTIATE_TEST_SUITE_P(WithADecimalComma, NSFormatUnderLocale, testing::Values("de_DE.UTF-8", "tr_TR.UTF-8"));
