// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNibDocument.h>

#include <QFormLayout>
#include <QFrame>
#include <QLayout>
#include <QMetaEnum>
#include <QPalette>
#include <QSizePolicy>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr double leastVersion = 4;

/// An element of a form, and what may stand in it, as the Qt that reads it has it; that refuses a file with anything
/// else, too.
struct Element {
    QLatin1String name;
    const char* children;
    const char* attributes;
};

constexpr const char* values =
    " bool color cstring cursor cursorshape enum font iconset pixmap palette point rect set locale sizepolicy size "
    "string stringlist number float double date time datetime pointf rectf sizef longlong char url uint ulonglong "
    "brush ";

const Element elements[] = {
    {QLatin1String("ui"),
     " author comment exportmacro class widget layoutdefault layoutfunction pixmapfunction customwidgets tabstops "
     "images "
     "includes resources connections designerdata slots buttongroups ",
     " version language displayname idbasedtr connectslotsbyname stdsetdef "},
    {QLatin1String("widget"),
     " class property script widgetdata attribute row column item layout widget action actiongroup addaction zorder ",
     " class name native "},
    {QLatin1String("layout"), " property attribute item ",
     " class name stretch rowstretch columnstretch rowminimumheight columnminimumwidth "},
    {QLatin1String("item"), " widget layout spacer property item ", " row column rowspan colspan alignment "},
    {QLatin1String("spacer"), " property ", " name "},
    {QLatin1String("action"), " property attribute ", " name menu "},
    {QLatin1String("property"), values, " name stdset "},
    {QLatin1String("attribute"), values, " name stdset "},
    {QLatin1String("string"), " ", " notr comment extracomment id "},
    {QLatin1String("customwidgets"), " customwidget ", " "},
    {QLatin1String("buttongroups"), " buttongroup ", " "},
    {QLatin1String("buttongroup"), " property attribute ", " name "},
};

const Element* elementNamed(const QString& name) {
    const auto* const found = std::find_if(std::begin(elements), std::end(elements),
                                           [&](const Element& element) { return name == element.name; });
    return found == std::end(elements) ? nullptr : found;
}

/// Whether `name` is one of `names`, which have spaces around them. Qt does not tell capitals from small letters here.
bool isOneOf(const char* names, QStringView name) {
    const QString wanted = QLatin1Char(' ') + name.toString().toLower() + QLatin1Char(' ');
    return QLatin1String(names).contains(wanted);
}

bool hasKeys(const QMetaEnum& enumeration, const QString& keys) {
    bool isKnown = false;
    enumeration.keysToValue(keys.toUtf8().constData(), &isKnown);
    return isKnown;
}

bool isEnumerationElement(QStringView name) {
    return name == u"enum" || name == u"set";
}

/// Whether `value` names values of one of the enumerations that layouts, spacers and lines have.
bool isLayoutEnumeration(const QString& value) {
    const std::array enumerations = {
        QMetaEnum::fromType<Qt::Orientation>(),
        QMetaEnum::fromType<Qt::Alignment>(),
        QMetaEnum::fromType<QSizePolicy::Policy>(),
        QMetaEnum::fromType<QLayout::SizeConstraint>(),
        QMetaEnum::fromType<QFormLayout::RowWrapPolicy>(),
        QMetaEnum::fromType<QFormLayout::FieldGrowthPolicy>(),
        QMetaEnum::fromType<QFrame::Shadow>(),
        QMetaEnum::fromType<QFrame::Shape>(),
    };
    return std::any_of(enumerations.begin(), enumerations.end(),
                       [&](const QMetaEnum& enumeration) { return hasKeys(enumeration, value); });
}

/// Whether `value` is one that the attribute of an element can have. Others than those here can have any.
bool canHaveValue(const QString& element, QStringView attribute, const QString& value) {
    if (element == u"sizepolicy" && (attribute == u"hsizetype" || attribute == u"vsizetype")) {
        return hasKeys(QMetaEnum::fromType<QSizePolicy::Policy>(), value);
    }
    if (element == u"brush" && attribute == u"brushstyle") {
        return hasKeys(QMetaEnum::fromType<Qt::BrushStyle>(), value);
    }
    if (element == u"colorrole" && attribute == u"role") {
        return hasKeys(QMetaEnum::fromType<QPalette::ColorRole>(), value);
    }
    return true;
}

/// Copies a form and takes out of it what NibDocument keeps apart.
class FormReader {
public:
    FormReader(const QByteArray& content, NibDocument& document)
        : m_reader(content), m_writer(&document.form), m_document(document) {}

    void read() {
        if (!m_reader.readNextStartElement()) {
            return fail(QStringLiteral("it is empty"));
        }
        if (m_reader.name() != u"ui") {
            return fail(QStringLiteral("it is not a form of Designer's, but has the element \"%1\" at its root")
                            .arg(m_reader.name()));
        }
        // Not of the versions of Designer before this kind of form.
        bool isNumber = false;
        const QString version = m_reader.attributes().value(QLatin1String("version")).toString();
        if (const double number = version.toDouble(&isNumber); isNumber && number < leastVersion) {
            return fail(QStringLiteral("it is a form of Designer's version %1").arg(version));
        }
        m_writer.writeStartDocument();
        copyElement({}, 1);
        // What follows the root has to be well-formed, too.
        while (m_document.fault.isNull() && !m_reader.atEnd()) {
            m_reader.readNext();
        }
        if (m_reader.hasError()) {
            fail(m_reader.errorString());
        }
        if (m_document.fault.isNull() && m_document.objects.empty()) {
            m_document.fault = QStringLiteral("there is no widget in it");
        }
    }

private:
    void fail(const QString& what) {
        if (m_document.fault.isNull()) {
            const QString reason = m_reader.hasError() ? m_reader.errorString() : what;
            m_document.fault = QStringLiteral("line %1, column %2: %3")
                                   .arg(m_reader.lineNumber())
                                   .arg(m_reader.columnNumber())
                                   .arg(reason);
        }
    }

    /// The reader is at the start of an element within one called `parent`; afterwards it is at its end.
    void copyElement(const QString& parent, int depth) {
        if (depth > NibDocument::mostElementsDeep) {
            return fail(QStringLiteral("elements lie more than %1 deep").arg(NibDocument::mostElementsDeep));
        }
        const QString name = m_reader.name().toString();
        if (!mayStandIn(parent, name)) {
            return;
        }
        if (name == u"connections") {
            return takeConnections();
        }
        if (name == u"tabstops") {
            return takeTexts(u"tabstop", m_document.tabStops);
        }
        if (name == u"customwidget") {
            m_className.clear();
            m_baseClassName.clear();
        }
        if (name == u"property" && takeProperty(parent)) {
            return;
        }
        if (name != u"property") {
            m_writer.writeStartElement(name);
            writeAttributes(name);
        }
        if (name == u"widget") {
            beginWidget();
        }
        copyContent(name, depth);
        m_propertyName.clear();
        if (name == u"widget") {
            m_openWidgets.pop_back();
        } else if (name == u"customwidget" && !m_baseClassName.isEmpty()) {
            m_document.baseClasses.insert(m_className, m_baseClassName);
        }
        m_writer.writeEndElement();
    }

    /// Fails where Qt would.
    bool mayStandIn(const QString& parent, const QString& name) {
        const Element* around = elementNamed(parent);
        if (around && !isOneOf(around->children, name)) {
            fail(QStringLiteral("there is an element \"%1\" in one \"%2\"").arg(name, parent));
            return false;
        }
        const Element* element = elementNamed(name);
        for (const QXmlStreamAttribute& attribute : m_reader.attributes()) {
            if (element && !isOneOf(element->attributes, attribute.name())) {
                fail(QStringLiteral("an element \"%1\" has an attribute \"%2\"").arg(name, attribute.name()));
                return false;
            }
        }
        return true;
    }

    void writeAttributes(const QString& name) {
        for (const QXmlStreamAttribute& attribute : m_reader.attributes()) {
            const QString value = attribute.value().toString();
            if (canHaveValue(name, attribute.name(), value)) {
                m_writer.writeAttribute(attribute);
            } else {
                noteNoValue(value, attribute.name().toString());
            }
        }
    }

    void noteNoValue(const QString& value, const QString& name) {
        m_document.smallFaults.push_back(QStringLiteral("\"%1\" is no value of the property \"%2\"").arg(value, name));
    }

    void copyContent(const QString& name, int depth) {
        // A property whose value was looked at stands at its value already.
        bool isAtNext = name == u"property";
        while (m_document.fault.isNull()) {
            const QXmlStreamReader::TokenType token = isAtNext ? m_reader.tokenType() : m_reader.readNext();
            isAtNext = false;
            if (token == QXmlStreamReader::StartElement) {
                copyElement(name, depth + 1);
            } else if (token == QXmlStreamReader::Characters) {
                m_writer.writeCharacters(m_reader.text().toString());
                noteText(name, m_reader.text());
            } else if (token == QXmlStreamReader::EndElement) {
                return;
            } else if (token == QXmlStreamReader::Invalid) {
                return fail({});
            }
        }
    }

    void noteText(const QString& element, QStringView text) {
        if (m_propertyName == u"styleMask" && !text.trimmed().isEmpty()) {
            m_document.styleMasks.insert(m_document.objects[m_openWidgets.back()].name, text.trimmed().toString());
        } else if (element == u"class") {
            m_className = text.trimmed().toString();
        } else if (element == u"extends") {
            m_baseClassName = text.trimmed().toString();
        }
    }

    void beginWidget() {
        const QXmlStreamAttributes attributes = m_reader.attributes();
        m_openWidgets.push_back(m_document.objects.size());
        m_document.objects.push_back({attributes.value(QLatin1String("class")).toString(),
                                      attributes.value(QLatin1String("name")).toString(),
                                      {}});
        m_writer.writeStartElement(QStringLiteral("property"));
        m_writer.writeAttribute(QStringLiteral("name"), QLatin1String(NibDocument::numberProperty));
        m_writer.writeTextElement(QStringLiteral("number"), QString::number(m_openWidgets.back()));
        m_writer.writeEndElement();
    }

    /// Takes a property whose value is an enumeration, of the element `parent`; of any other only its start is read and
    /// written, up to its value.
    bool takeProperty(const QString& parent) {
        const QXmlStreamAttributes attributes = m_reader.attributes();
        const QString name = attributes.value(QLatin1String("name")).toString();
        do {
            m_reader.readNext();
        } while (m_reader.isWhitespace() || m_reader.isComment());
        if (m_reader.isStartElement() && isEnumerationElement(m_reader.name())) {
            const QString element = m_reader.name().toString();
            const QString value = m_reader.readElementText(QXmlStreamReader::SkipChildElements);
            const bool isPlain = parent == u"widget" && m_document.objects[m_openWidgets.back()].className != u"Line";
            if (isPlain) {
                m_document.objects[m_openWidgets.back()].enumerations.push_back({name, value});
            } else if (isLayoutEnumeration(value) ||
                       (parent != u"layout" && parent != u"spacer" && parent != u"widget")) {
                writePropertyStart(attributes);
                m_writer.writeTextElement(element, value);
                m_writer.writeEndElement();
            } else {
                noteNoValue(value, name);
            }
            m_reader.skipCurrentElement();
            return true;
        }
        if (m_reader.isStartElement() && m_reader.name() == u"cursorShape") {
            const QString value = m_reader.readElementText(QXmlStreamReader::SkipChildElements);
            if (hasKeys(QMetaEnum::fromType<Qt::CursorShape>(), value)) {
                writePropertyStart(attributes);
                m_writer.writeTextElement(QStringLiteral("cursorShape"), value);
                m_writer.writeEndElement();
            } else {
                noteNoValue(value, name);
            }
            m_reader.skipCurrentElement();
            return true;
        }
        if (m_reader.isEndElement()) {
            m_document.smallFaults.push_back(QStringLiteral("the property \"%1\" has no value").arg(name));
            return true;
        }
        writePropertyStart(attributes);
        m_propertyName = parent == u"widget" ? name : QString();
        return false;
    }

    void writePropertyStart(const QXmlStreamAttributes& attributes) {
        m_writer.writeStartElement(QStringLiteral("property"));
        m_writer.writeAttributes(attributes);
    }

    void takeConnections() {
        while (m_reader.readNextStartElement()) {
            NibDocument::Connection connection;
            while (m_reader.readNextStartElement()) {
                const QString name = m_reader.name().toString();
                const QString text = m_reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
                if (name == u"sender") {
                    connection.sender = text;
                } else if (name == u"signal") {
                    connection.signal = text;
                } else if (name == u"receiver") {
                    connection.receiver = text;
                } else if (name == u"slot") {
                    connection.slot = text;
                }
            }
            m_document.connections.push_back(connection);
        }
    }

    void takeTexts(QStringView element, QStringList& texts) {
        while (m_reader.readNextStartElement()) {
            const bool isWanted = m_reader.name() == element;
            const QString text = m_reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
            if (isWanted) {
                texts.push_back(text);
            }
        }
    }

    QXmlStreamReader m_reader;
    QXmlStreamWriter m_writer;
    NibDocument& m_document;
    std::vector<std::size_t> m_openWidgets;
    QString m_propertyName; // of a widget, while it is read
    QString m_className;
    QString m_baseClassName;
};

} // namespace

NibDocument NibDocument::read(const QByteArray& content) {
    NibDocument document;
    FormReader(content, document).read();
    return document;
}
