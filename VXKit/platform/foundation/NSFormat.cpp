// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSFormat.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

using VXFormat::Directive;
using VXFormat::Length;
using VXFormat::Measure;

constexpr QStringView nilDescription = u"(null)";

QString textOfUtf8(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// The C locale for this thread alone while it lives. printf takes its decimal separator from the locale, and setlocale
/// would change it for the whole process.
class CLocaleScope {
public:
    CLocaleScope() : m_previous(::uselocale(cLocale())) {}
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;
    ~CLocaleScope() { ::uselocale(m_previous); }

private:
    static locale_t cLocale() {
        static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t m_previous;
};

QString describeAddress(const void* address) {
    return QStringLiteral("0x") + QString::number(std::bit_cast<std::uintptr_t>(address), 16);
}

/// The double that reads like `number`: 0.1 for 0.1F, whose own value is 0.100000001….
double doubleThatReadsLike(float number) {
    char digits[32];
    const auto written = std::to_chars(std::begin(digits), std::end(digits), number);
    double value = 0;
    std::from_chars(std::begin(digits), written.ptr, value);
    return value;
}

QString describeNumber(double number) {
    return NSPropertyList(number).description();
}

/// What `%@` prints for an argument.
QString describe(const NSFormatArgument& argument) {
    struct Describe {
        QString operator()(NSFormatArgument::Nil) const { return {}; }
        QString operator()(std::int64_t number) const { return QString::number(number); }
        QString operator()(std::uint64_t number) const { return QString::number(number); }
        QString operator()(float number) const { return describeNumber(doubleThatReadsLike(number)); }
        QString operator()(double number) const { return describeNumber(number); }
        QString operator()(long double number) const { return describeNumber(static_cast<double>(number)); }
        QString operator()(const char* text) const { return text ? textOfUtf8(text) : QString(); }
        QString operator()(std::string_view text) const { return VXFormat::descriptionOfText(text); }
        QString operator()(const void* pointer) const { return pointer ? describeAddress(pointer) : QString(); }
        QString operator()(const NSFormatArgument::Object& object) const { return object.describe(object.pointer); }
    };
    const QString description = std::visit(Describe(), argument.variant());
    return description.isNull() ? nilDescription.toString() : description;
}

/// The bits that an integer conversion prints; nothing for what is neither a number nor a plain pointer.
std::optional<std::uint64_t> bitsOf(const NSFormatArgument& argument) {
    struct Bits {
        std::optional<std::uint64_t> operator()(std::int64_t number) const {
            return std::bit_cast<std::uint64_t>(number);
        }
        std::optional<std::uint64_t> operator()(std::uint64_t number) const { return number; }
        std::optional<std::uint64_t> operator()(float number) const { return (*this)(static_cast<double>(number)); }
        std::optional<std::uint64_t> operator()(double number) const { return std::bit_cast<std::uint64_t>(number); }
        std::optional<std::uint64_t> operator()(long double number) const {
            return std::bit_cast<std::uint64_t>(static_cast<double>(number));
        }
        std::optional<std::uint64_t> operator()(const void* pointer) const {
            return std::bit_cast<std::uintptr_t>(pointer);
        }
        std::optional<std::uint64_t> operator()(NSFormatArgument::Nil) const { return {}; }
        std::optional<std::uint64_t> operator()(const char*) const { return {}; }
        std::optional<std::uint64_t> operator()(std::string_view) const { return {}; }
        std::optional<std::uint64_t> operator()(const NSFormatArgument::Object&) const { return {}; }
    };
    return std::visit(Bits(), argument.variant());
}

/// The number that a floating-point conversion prints; nothing for what is no number.
std::optional<long double> realOf(const NSFormatArgument& argument) {
    return std::visit(
        [](auto value) -> std::optional<long double> {
            if constexpr (std::is_arithmetic_v<decltype(value)>) {
                return static_cast<long double>(value);
            } else {
                return {};
            }
        },
        argument.variant());
}

std::optional<const void*> addressOf(const NSFormatArgument& argument) {
    struct Address {
        std::optional<const void*> operator()(NSFormatArgument::Nil) const { return nullptr; }
        std::optional<const void*> operator()(const char* text) const { return text; }
        std::optional<const void*> operator()(std::string_view text) const { return text.data(); }
        std::optional<const void*> operator()(const void* pointer) const { return pointer; }
        std::optional<const void*> operator()(const NSFormatArgument::Object& object) const { return object.pointer; }
        std::optional<const void*> operator()(std::int64_t) const { return {}; }
        std::optional<const void*> operator()(std::uint64_t) const { return {}; }
        std::optional<const void*> operator()(float) const { return {}; }
        std::optional<const void*> operator()(double) const { return {}; }
        std::optional<const void*> operator()(long double) const { return {}; }
    };
    return std::visit(Address(), argument.variant());
}

/// `bits` as the low bits that a conversion of this length takes, sign extended.
std::int64_t signedOfLength(std::uint64_t bits, Length length) {
    switch (length) {
    case Length::Char:
        return static_cast<std::int8_t>(bits);
    case Length::Short:
        return static_cast<std::int16_t>(bits);
    case Length::None:
        return static_cast<std::int32_t>(bits);
    case Length::Long:
    case Length::LongDouble:
        break;
    }
    return static_cast<std::int64_t>(bits);
}

std::uint64_t unsignedOfLength(std::uint64_t bits, Length length) {
    switch (length) {
    case Length::Char:
        return static_cast<std::uint8_t>(bits);
    case Length::Short:
        return static_cast<std::uint16_t>(bits);
    case Length::None:
        return static_cast<std::uint32_t>(bits);
    case Length::Long:
    case Length::LongDouble:
        break;
    }
    return bits;
}

/// `text` without its end, so that `length` UTF-16 units are left, one less where that would halve a surrogate pair.
QString cutTo(const QString& text, int length) {
    if (length >= text.size()) {
        return text;
    }
    const bool halvesPair = length > 0 && text.at(length - 1).isHighSurrogate();
    return text.left(halvesPair ? length - 1 : length);
}

class Formatter {
public:
    Formatter(std::string_view format, const NSFormatArguments& arguments) : m_format(format), m_arguments(arguments) {}

    QString format() {
        std::size_t position = 0;
        while (position < m_format.size()) {
            const std::size_t percent = std::min(m_format.find('%', position), m_format.size());
            m_output += textOfUtf8(m_format.substr(position, percent - position));
            if (percent == m_format.size()) {
                break;
            }
            const Directive directive = VXFormat::parseDirective(m_format, percent);
            position = directive.end;
            if (directive.conversion == '%') {
                m_output += u'%';
            } else if (directive.role() == 0) {
                // No conversion. What follows the percent sign may still hold one, so only the sign is passed over.
                m_output += u'%';
                position = percent + 1;
            } else {
                convert(directive);
            }
        }
        return m_output;
    }

private:
    void convert(const Directive& directive) {
        m_width = std::clamp(valueOf(directive.width).value_or(0), -VXFormat::largestMeasure, VXFormat::largestMeasure);
        const int precision = valueOf(directive.precision).value_or(-1);
        m_precision = precision < 0 ? std::nullopt : std::optional(precision);
        const NSFormatArgument* argument = m_arguments.argumentAtIndex(m_used++);
        if (!argument) {
            pad(directive, nilDescription.toString());
            return;
        }
        switch (directive.role()) {
        case VXFormat::IntegerRole:
        case VXFormat::LongIntegerRole:
            if (const std::optional<std::uint64_t> bits = bitsOf(*argument)) {
                return convertInteger(directive, *bits);
            }
            break;
        case VXFormat::RealRole:
        case VXFormat::LongRealRole:
            if (const std::optional<long double> number = realOf(*argument)) {
                return convertReal(directive, *number);
            }
            break;
        case VXFormat::TextRole:
            if (const auto* text = std::get_if<std::string_view>(&argument->variant())) {
                return pad(directive, firstBytes(text->data(), text->size()));
            }
            if (const auto* text = std::get_if<const char*>(&argument->variant()); text && *text) {
                return pad(directive, firstBytes(*text, std::numeric_limits<std::size_t>::max()));
            }
            break;
        case VXFormat::PointerRole:
            if (const std::optional<const void*> address = addressOf(*argument)) {
                return pad(directive, describeAddress(*address));
            }
            break;
        default:
            break;
        }
        const QString description = describe(*argument);
        pad(directive, m_precision ? cutTo(description, *m_precision) : description);
    }

    /// The number that a width or precision stands for; nothing where there is none.
    std::optional<int> valueOf(const Measure& measure) {
        if (measure.source == Measure::Absent) {
            return {};
        }
        if (measure.source == Measure::Literal) {
            return measure.value;
        }
        const NSFormatArgument* argument = m_arguments.argumentAtIndex(m_used++);
        const std::optional<std::uint64_t> bits = argument ? bitsOf(*argument) : std::nullopt;
        return bits ? std::optional(static_cast<std::int32_t>(*bits)) : std::nullopt;
    }

    /// At most `size` bytes up to the terminator, and no more than the precision: what is cut short need not have one.
    QString firstBytes(const char* text, std::size_t size) const {
        if (m_precision) {
            size = std::min(size, static_cast<std::size_t>(*m_precision));
        }
        return size == 0 ? QString() : textOfUtf8({text, ::strnlen(text, size)});
    }

    void convertInteger(const Directive& directive, std::uint64_t bits) {
        switch (directive.conversion) {
        case 'c':
            return convertCharacter(directive, bits);
        case 'd':
        case 'i':
            return print(directive, "jd", std::intmax_t{signedOfLength(bits, directive.length)});
        default:
            return print(directive, std::string("j") + directive.conversion,
                         std::uintmax_t{unsignedOfLength(bits, directive.length)});
        }
    }

    void convertCharacter(const Directive& directive, std::uint64_t bits) {
        // A single byte above 127 is a piece of a character, and U+FFFD like every other broken one.
        const char32_t code =
            static_cast<char32_t>(directive.length == Length::Long ? bits & 0xFFFFFFFFU : bits & 0xFFU);
        const char32_t last = directive.length == Length::Long ? char32_t{QChar::LastValidCodePoint} : U'\x7F';
        const bool isCharacter = code <= last && !QChar::isSurrogate(code);
        pad(directive, isCharacter ? QString::fromUcs4(&code, 1) : QString(QChar(QChar::ReplacementCharacter)));
    }

    void convertReal(const Directive& directive, long double number) {
        if (directive.length == Length::LongDouble) {
            return print(directive, std::string("L") + directive.conversion, number);
        }
        print(directive, std::string(1, directive.conversion), static_cast<double>(number));
    }

    /// Has the C library print a number, with the flags, width and precision of `directive` and the given length
    /// and conversion.
    template <class Number>
    void print(const Directive& directive, std::string_view conversion, Number number) {
        std::string format = "%";
        format += directive.flags;
        format += "*.*";
        format += conversion;
        // A negative precision is none.
        const int precision = std::min(m_precision.value_or(-1), VXFormat::largestMeasure);

        const CLocaleScope scope;
        char buffer[128];
#pragma GCC diagnostic push
// Put together above out of a directive that was read and a number of the type it names.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        const int length = std::snprintf(buffer, sizeof buffer, format.c_str(), m_width, precision, number);
        if (length < static_cast<int>(sizeof buffer)) {
            m_output += QString::fromLatin1(buffer, std::max(length, 0));
            return;
        }
        std::string longer(static_cast<std::size_t>(length) + 1, '\0');
        std::snprintf(longer.data(), longer.size(), format.c_str(), m_width, precision, number);
#pragma GCC diagnostic pop
        m_output += QString::fromLatin1(longer.data(), length);
    }

    void pad(const Directive& directive, const QString& text) {
        const bool toTheLeft = m_width < 0 || directive.flags.find('-') != std::string_view::npos;
        const int width = std::abs(m_width);
        m_output += toTheLeft ? text.leftJustified(width) : text.rightJustified(width);
    }

    std::string_view m_format;
    const NSFormatArguments& m_arguments;
    std::size_t m_used = 0;
    int m_width = 0; ///< negative where the text goes to the left of it
    std::optional<int> m_precision;
    QString m_output;
};

} // namespace

QString VXFormat::descriptionOfText(std::string_view text) {
    // A view of nothing is an empty string, not nil.
    return text.empty() ? QStringLiteral("") : textOfUtf8(text);
}

QString VXFormat::descriptionOfDate(NSDate date) {
    return NSPropertyList(date).description();
}

QString VXFormat::descriptionOfPropertyList(const NSPropertyList& value) {
    return value.description();
}

QString NSStringWithFormatArguments(std::string_view format, const NSFormatArguments& arguments) {
    return Formatter(format, arguments).format();
}
