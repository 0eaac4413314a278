// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class QWidget;

/// A name in small white text, in the middle of a view of its size, for a dark ground; it has none of its own.
///
/// Its size is that of the name in a larger font than it is drawn in, so that there is always room around it. The name
/// does not change once it is shown: for text that does, a label of Qt's is simpler. Screen readers read it out.
class VXKIT_EXPORT LTNameTag : public NSView {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

public:
    /// A tag without a name or a frame, for a nib.
    explicit LTNameTag(QWidget* parent = nullptr);
    /// A tag a line high and as wide as `name` with a little room, at least 20 points. AppKit: `-initWithName:`.
    explicit LTNameTag(QString itsName);
    /// A tag three lines high and at least 185 points wide, with the text under the key "name" of `dictionary`, which
    /// it keeps. Without such a text it has no name, and the height of no line. AppKit: `-initWithDictionary:`.
    explicit LTNameTag(const NSDictionary& dictionary);
    ~LTNameTag() override;

    /// A tag with `name`, owned by the caller until it is a subview. AppKit's form: a class method of the same name.
    [[nodiscard]] static std::unique_ptr<LTNameTag> nameTagWithName(const QString& name);
    /// A tag of `dictionary`, likewise.
    [[nodiscard]] static std::unique_ptr<LTNameTag> nameTagWithDictionary(const NSDictionary& dictionary);

    /// The name; empty for a tag without one.
    [[nodiscard]] QString text() const { return name; }
    /// Gives a tag its name that was made without one, by a form. Its frame stays as it is.
    void setText(const QString& text);

    /// What the tag was made from; nothing for one that was made from a name.
    [[nodiscard]] const std::optional<NSDictionary>& dictionary() const { return dic; }

    /// Draws the name, and no ground.
    void drawRect(const NSRect& dirtyRect) override;

private:
    QString name;
    std::optional<NSDictionary> dic;
};
