// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QString>
#include <QVarLengthArray>

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// What the format functions below are made of; nothing here is meant to be called by name.
namespace VXFormat {

/// What a conversion wants of its argument, and what an argument can serve as.
enum Role : unsigned {
    IntegerRole = 1U << 0U,     ///< an integer of at most 32 bits
    LongIntegerRole = 1U << 1U, ///< an integer of 64 bits
    RealRole = 1U << 2U,        ///< a `float` or `double`
    LongRealRole = 1U << 3U,    ///< a `long double`
    TextRole = 1U << 4U,        ///< text by `%s`
    PointerRole = 1U << 5U,     ///< an address by `%p`
    ObjectRole = 1U << 6U,      ///< whatever `%@` takes
};

/// The length modifier of a conversion.
enum class Length : std::uint8_t {
    None,       ///< no modifier
    Char,       ///< hh
    Short,      ///< h
    Long,       ///< l, ll, q, j, z, t: all 64 bits wide here
    LongDouble, ///< L
};

/// A width or a precision: absent, a number in the format, or taken from the arguments.
struct Measure {
    /// Where the number comes from.
    enum Source : std::uint8_t {
        Absent,   ///< there is none
        Literal,  ///< it stands in the format
        Argument, ///< an asterisk stands for the next argument
    };
    Source source = Absent; ///< where it comes from
    int value = 0;          ///< the number of a Literal
};

/// A width and the precision of a number end here, so that no format can ask for gigabytes.
inline constexpr int largestMeasure = 9999;

/// One conversion directive, from its percent sign to its conversion character.
struct Directive {
    std::string_view flags;       ///< of `-+ #0'`, as they stand
    Measure width;                ///< of at least so many characters
    Measure precision;            ///< behind the full stop; a bare one counts as 0
    Length length = Length::None; ///< its length modifier
    char conversion = '\0';       ///< NUL where the format ends in the middle of a directive
    std::size_t end = 0;          ///< position behind it

    /// The Role it wants of its argument; 0 when it is no valid directive. `%%` wants none and has none: ask first.
    [[nodiscard]] constexpr unsigned role() const {
        switch (conversion) {
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            return length == Length::LongDouble ? 0U : length == Length::Long ? LongIntegerRole : IntegerRole;
        case 'c':
            return length == Length::None || length == Length::Long ? IntegerRole : 0U;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return length == Length::LongDouble                       ? LongRealRole
                   : length == Length::None || length == Length::Long ? RealRole
                                                                      : 0U;
        case 's':
            return length == Length::None ? TextRole : 0U;
        case 'p':
            return length == Length::None ? PointerRole : 0U;
        case '@':
            return length == Length::None ? ObjectRole : 0U;
        default:
            return 0U;
        }
    }
};

/// Reads a width or a precision at `position`, and goes on behind it.
constexpr Measure parseMeasure(std::string_view format, std::size_t& position) {
    if (position < format.size() && format[position] == '*') {
        ++position;
        return {Measure::Argument, 0};
    }
    Measure measure;
    while (position < format.size() && format[position] >= '0' && format[position] <= '9') {
        measure.source = Measure::Literal;
        // Held well below overflow, and still above every length that matters.
        if (measure.value < 100'000'000) {
            measure.value = 10 * measure.value + (format[position] - '0');
        }
        ++position;
    }
    return measure;
}

/// Reads a length modifier at `position`, and goes on behind it.
constexpr Length parseLength(std::string_view format, std::size_t& position) {
    const auto is = [&](std::size_t offset, char character) {
        return position + offset < format.size() && format[position + offset] == character;
    };
    if (is(0, 'h')) {
        const bool doubled = is(1, 'h');
        position += doubled ? 2U : 1U;
        return doubled ? Length::Char : Length::Short;
    }
    if (is(0, 'l')) {
        position += is(1, 'l') ? 2U : 1U;
        return Length::Long;
    }
    if (is(0, 'q') || is(0, 'j') || is(0, 'z') || is(0, 't')) {
        ++position;
        return Length::Long;
    }
    if (is(0, 'L')) {
        ++position;
        return Length::LongDouble;
    }
    return Length::None;
}

/// Reads the directive whose percent sign stands at `percent`.
constexpr Directive parseDirective(std::string_view format, std::size_t percent) {
    Directive directive;
    std::size_t position = percent + 1;
    const std::size_t flagsEnd = format.find_first_not_of("-+ #0'", position);
    directive.flags = format.substr(position, flagsEnd - position);
    position = flagsEnd == std::string_view::npos ? format.size() : flagsEnd;
    directive.width = parseMeasure(format, position);
    if (position < format.size() && format[position] == '.') {
        ++position;
        directive.precision = parseMeasure(format, position);
        if (directive.precision.source == Measure::Absent) {
            directive.precision.source = Measure::Literal;
        }
    }
    directive.length = parseLength(format, position);
    if (position < format.size()) {
        directive.conversion = format[position];
        ++position;
    }
    directive.end = position;
    return directive;
}

/// What is wrong with a format.
enum class Fault : std::uint8_t {
    None,              ///< it fits its arguments
    UnknownConversion, ///< a percent sign begins no conversion
    TooFewArguments,   ///< a conversion is left without an argument
    TooManyArguments,  ///< an argument is left without a conversion
    WrongArgumentType, ///< an argument cannot serve its conversion
};

/// Compares `format` with what its arguments can serve as, `roles`.
constexpr Fault check(std::string_view format, std::span<const unsigned> roles) {
    std::size_t used = 0;
    const auto take = [&](unsigned role) {
        if (used == roles.size()) {
            return Fault::TooFewArguments;
        }
        return (roles[used++] & role) != 0 ? Fault::None : Fault::WrongArgumentType;
    };
    std::size_t position = 0;
    while ((position = format.find('%', position)) != std::string_view::npos) {
        const Directive directive = parseDirective(format, position);
        position = directive.end;
        if (directive.conversion == '%') {
            continue;
        }
        if (directive.role() == 0) {
            return Fault::UnknownConversion;
        }
        for (const Measure measure : {directive.width, directive.precision}) {
            if (measure.source == Measure::Argument) {
                if (const Fault fault = take(IntegerRole); fault != Fault::None) {
                    return fault;
                }
            }
        }
        if (const Fault fault = take(directive.role()); fault != Fault::None) {
            return fault;
        }
    }
    return used == roles.size() ? Fault::None : Fault::TooManyArguments;
}

/// One of the types `Candidates`.
template <class T, class... Candidates>
concept OneOf = (std::same_as<T, Candidates> || ...);

/// A class with a `description()`.
template <class T>
concept Described = std::is_class_v<T> && requires(const T& object) {
    { object.description() } -> std::convertible_to<QString>;
};

/// A class that becomes a QString by itself.
template <class T>
concept TextObject = std::is_class_v<T> && std::convertible_to<const T&, QString>;

/// What `%@` takes by reference, and behind a pointer.
template <class T>
concept Object =
    OneOf<T, std::string, std::string_view, NSDate, NSData, NSArray, NSDictionary> || Described<T> || TextObject<T>;

/// An enumeration that is printed as its number.
template <class T>
concept UnscopedEnum = std::is_enum_v<T> && std::convertible_to<T, std::underlying_type_t<T>>;

/// Whether T is an optional.
/// @{
template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;
/// @}

/// Whether T is one of the standard library's smart pointers that own.
/// @{
template <class T>
inline constexpr bool isSmartPointer = false;
template <class T>
inline constexpr bool isSmartPointer<std::shared_ptr<T>> = true;
template <class T, class Deleter>
inline constexpr bool isSmartPointer<std::unique_ptr<T, Deleter>> = true;
/// @}

/// What an argument of type T can serve as: Roles or-ed together, 0 for a type that no conversion takes.
template <class T>
constexpr unsigned rolesOf() {
    using Value = std::decay_t<T>;
    if constexpr (std::integral<Value> || UnscopedEnum<Value>) {
        return ObjectRole | (sizeof(Value) > sizeof(int) ? LongIntegerRole : IntegerRole);
    } else if constexpr (OneOf<Value, float, double>) {
        return ObjectRole | RealRole;
    } else if constexpr (std::same_as<Value, long double>) {
        return ObjectRole | LongRealRole;
    } else if constexpr (OneOf<Value, char*, const char*, std::nullptr_t>) {
        return ObjectRole | TextRole | PointerRole;
    } else if constexpr (OneOf<Value, std::string, std::string_view>) {
        return ObjectRole | TextRole;
    } else if constexpr (isOptional<Value>) {
        return rolesOf<typename Value::value_type>() & ObjectRole;
    } else if constexpr (isSmartPointer<Value>) {
        return Object<std::remove_cv_t<typename Value::element_type>> ? ObjectRole : 0U;
    } else if constexpr (std::is_pointer_v<Value>) {
        return PointerRole | (Object<std::remove_cv_t<std::remove_pointer_t<Value>>> ? ObjectRole : 0U);
    } else {
        return Object<Value> ? ObjectRole : 0U;
    }
}

/// What `%@` prints for UTF-8 text.
VXKIT_EXPORT QString descriptionOfText(std::string_view text);
/// What `%@` prints for a date.
VXKIT_EXPORT QString descriptionOfDate(NSDate date);
/// What `%@` prints for a property list; see NSPropertyList::description.
VXKIT_EXPORT QString descriptionOfPropertyList(const NSPropertyList& value);

/// What `%@` prints for the object of type T at `pointer`.
template <Object T>
QString describe(const void* pointer) {
    const T& object = *static_cast<const T*>(pointer);
    if constexpr (OneOf<T, std::string, std::string_view>) {
        return descriptionOfText(object);
    } else if constexpr (std::same_as<T, NSDate>) {
        return descriptionOfDate(object);
    } else if constexpr (OneOf<T, NSPropertyList, NSData, NSArray, NSDictionary>) {
        return descriptionOfPropertyList(object);
    } else if constexpr (Described<T>) {
        return object.description();
    } else {
        return object;
    }
}

/// What a format string that does not compile calls: the compiler's message then names the reason. Defined nowhere.
/// @{
void formatHasAnUnknownConversion();
void formatHasTooFewArguments();
void formatHasTooManyArguments();
void formatHasAnArgumentOfAnotherType();
/// @}

} // namespace VXFormat

/// One argument of a format, its type erased: a number by value, everything else borrowed.
class NSFormatArgument {
public:
    /// A nil object or pointer.
    struct Nil {};
    /// An object, borrowed, with what describes it.
    struct Object {
        const void* pointer; ///< the object
        /// Its description; asked while formatting.
        QString (*describe)(const void* pointer);
    };
    /// What an argument can be, in the form in which it is formatted.
    using Variant = std::variant<Nil, std::int64_t, std::uint64_t, float, double, long double, const char*,
                                 std::string_view, const void*, Object>;

    /// Nil.
    NSFormatArgument() = default;

    /// The argument that stands for `value`, which is borrowed unless it is a number. Does not compile for a type that
    /// no conversion takes.
    template <class T>
    static NSFormatArgument of(const T& value) {
        using Value = std::decay_t<T>;
        static_assert(VXFormat::rolesOf<T>() != 0, "No conversion of a format takes an argument of this type.");
        if constexpr (VXFormat::UnscopedEnum<Value>) {
            return of(static_cast<std::underlying_type_t<Value>>(value));
        } else if constexpr (std::signed_integral<Value>) {
            return NSFormatArgument(std::int64_t{value});
        } else if constexpr (std::unsigned_integral<Value>) {
            return NSFormatArgument(std::uint64_t{value});
        } else if constexpr (VXFormat::OneOf<Value, float, double, long double>) {
            return NSFormatArgument(value);
        } else if constexpr (std::same_as<Value, std::nullptr_t>) {
            return NSFormatArgument(Nil{});
        } else if constexpr (VXFormat::OneOf<Value, char*, const char*>) {
            return NSFormatArgument(static_cast<const char*>(value));
        } else if constexpr (VXFormat::OneOf<Value, std::string, std::string_view>) {
            return NSFormatArgument(std::string_view(value));
        } else if constexpr (VXFormat::isOptional<Value>) {
            return value ? of(*value) : NSFormatArgument(Nil{});
        } else if constexpr (VXFormat::isSmartPointer<Value>) {
            return of(value.get());
        } else if constexpr (std::is_pointer_v<Value>) {
            using Pointee = std::remove_cv_t<std::remove_pointer_t<Value>>;
            if constexpr (VXFormat::Object<Pointee>) {
                return value ? NSFormatArgument(Object{value, VXFormat::describe<Pointee>}) : NSFormatArgument(Nil{});
            } else if constexpr (std::is_function_v<Pointee>) {
                return NSFormatArgument(reinterpret_cast<const void*>(value));
            } else {
                return NSFormatArgument(const_cast<const void*>(static_cast<const volatile void*>(value)));
            }
        } else {
            return NSFormatArgument(Object{std::addressof(value), VXFormat::describe<Value>});
        }
    }

    /// What it is.
    [[nodiscard]] const Variant& variant() const { return m_value; }

private:
    template <class T>
    explicit NSFormatArgument(T value) : m_value(value) {}

    Variant m_value;
};

/// The arguments of a format, their types erased, for functions that pass on what they were given.
///
/// Strings and objects are borrowed: keep them until the formatting is done. An object's `description()` is asked only
/// while formatting, so arguments that are never formatted cost next to nothing. Stands for a started `va_list`.
class NSFormatArguments {
public:
    /// No arguments.
    NSFormatArguments() = default;
    /// These arguments, in this order.
    NSFormatArguments(std::initializer_list<NSFormatArgument> arguments) : m_arguments(arguments) {}

    /// How many there are.
    [[nodiscard]] std::size_t count() const { return static_cast<std::size_t>(m_arguments.size()); }

    /// The argument at `index`, or null where there are not so many.
    [[nodiscard]] const NSFormatArgument* argumentAtIndex(std::size_t index) const {
        return index < count() ? m_arguments.data() + index : nullptr;
    }

private:
    QVarLengthArray<NSFormatArgument, 6> m_arguments;
};

/// Borrows `arguments` for a function that takes NSFormatArguments. An argument whose type no conversion takes does not
/// compile.
template <class... Arguments>
[[nodiscard]] NSFormatArguments NSMakeFormatArguments(const Arguments&... arguments) {
    return {NSFormatArgument::of(arguments)...};
}

/// Whether `format` fits arguments of these types, which is what NSFormatString demands of it.
template <class... Arguments>
[[nodiscard]] constexpr bool NSFormatFitsArguments(std::string_view format) {
    constexpr std::array<unsigned, sizeof...(Arguments)> roles{VXFormat::rolesOf<Arguments>()...};
    return VXFormat::check(format, roles) == VXFormat::Fault::None;
}

/// A format string, checked by the compiler against the types of its arguments: one that does not fit them does not
/// compile. Every argument must be used, by a conversion of its type:
///
/// | conversion                | takes                                                                               |
/// |---------------------------|-------------------------------------------------------------------------------------|
/// | `%@`                      | strings, numbers (as `NSNumber` prints them), dates, property lists, whatever has a |
/// |                           | `QString description() const`; by reference, behind a raw or smart pointer or in an |
/// |                           | optional; nil prints `(null)`                                                       |
/// | `%d %i %u %x %X %o`       | integers of up to 32 bits; with l, ll, q, z, t or j those of 64 bits                |
/// | `%c`                      | the code of an ASCII character; `%lc` that of any character                         |
/// | `%s`                      | `const char*`, `std::string`, `std::string_view`; UTF-8                             |
/// | `%f %F %e %E %g %G %a %A` | `float` and `double`; with L `long double`                                          |
/// | `%p`                      | pointers                                                                            |
///
/// Flags, width and precision are those of `printf`, `*` included. The precision of `%s` counts bytes, as it does
/// there, that of `%@` UTF-16 units, widths of text UTF-16 units. Widths, and precisions of numbers, end at 9999.
template <class... Arguments>
class NSFormatString {
public:
    /// A format of the literal `text`, checked.
    template <class Text>
    requires std::convertible_to<const Text&, std::string_view>
    consteval NSFormatString(const Text& text) : m_text(text) {
        constexpr std::array<unsigned, sizeof...(Arguments)> roles{VXFormat::rolesOf<Arguments>()...};
        switch (VXFormat::check(m_text, roles)) {
        case VXFormat::Fault::None:
            break;
        case VXFormat::Fault::UnknownConversion:
            VXFormat::formatHasAnUnknownConversion();
            break;
        case VXFormat::Fault::TooFewArguments:
            VXFormat::formatHasTooFewArguments();
            break;
        case VXFormat::Fault::TooManyArguments:
            VXFormat::formatHasTooManyArguments();
            break;
        case VXFormat::Fault::WrongArgumentType:
            VXFormat::formatHasAnArgumentOfAnotherType();
            break;
        }
    }

    /// The format as it was written.
    [[nodiscard]] constexpr std::string_view text() const { return m_text; }

private:
    std::string_view m_text;
};

/// Formats arguments that the compiler could not compare with `format` (UTF-8). Never crashes, whatever they are: a
/// missing argument prints `(null)`, surplus ones are left out; a double under an integer conversion prints the low 32
/// bits (with l, ll, q, z, t or j all 64) of its representation; any other argument that its conversion cannot print
/// stands as `%@` would print it; what is no conversion stands as it is. The same under every locale; bytes that are
/// not UTF-8 become U+FFFD. AppKit: `-initWithFormat:arguments:` of `NSString`.
[[nodiscard]] VXKIT_EXPORT QString NSStringWithFormatArguments(std::string_view format,
                                                               const NSFormatArguments& arguments);

/// Formats `arguments`; see NSFormatString. AppKit: `+stringWithFormat:` of `NSString`.
template <class... Arguments>
[[nodiscard]] QString NSStringWithFormat(NSFormatString<std::type_identity_t<Arguments>...> format,
                                         const Arguments&... arguments) {
    return NSStringWithFormatArguments(format.text(), NSMakeFormatArguments(arguments...));
}
