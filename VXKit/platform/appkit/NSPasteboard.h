// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QByteArray>
#include <QPointer>
#include <QString>
#include <QStringList>

class QMimeData;

/// Plain text whose writer did not say more about it; `text/plain` on the desktop's clipboard.
inline constexpr const char* NSStringPboardType = "NSStringPboardType";

/// The desktop's clipboard, seen as data of named types that its last writer put there.
///
/// Text types have names of their own, everything else appears under its MIME name:
///
/// | type                     | on the clipboard                                              |
/// |--------------------------|---------------------------------------------------------------|
/// | `NSStringPboardType`     | `text/plain`                                                  |
/// | `public.utf8-plain-text` | `text/plain;charset=utf-8`                                    |
/// | `public.plain-text`      | `text/plain` with any other charset; written as UTF-16        |
///
/// What is read is what is there at that moment: other programs may write between two calls. Needs a running
/// QGuiApplication; without one the pasteboard is empty and takes nothing. Main thread only. Stands for AppKit's class
/// of the same name.
class VXKIT_EXPORT NSPasteboard {
public:
    ~NSPasteboard();
    NSPasteboard(const NSPasteboard&) = delete;
    NSPasteboard& operator=(const NSPasteboard&) = delete;

    /// The pasteboard of cut, copy and paste; lives as long as the process. AppKit: `+generalPasteboard`.
    [[nodiscard]] static NSPasteboard& generalPasteboard();

    /// The types of what is on the pasteboard now, in the writer's order, each once. AppKit: `-types`.
    [[nodiscard]] QStringList types() const;

    /// The text of `type`, decoded in the charset that its writer named; where that is none or unknown, as UTF-8, or as
    /// Latin-1 when it is not valid UTF-8. Null when the pasteboard has nothing of `type`, and for a MIME type other
    /// than `text/…`, which is no text. AppKit: `-stringForType:`.
    [[nodiscard]] QString stringForType(const QString& type) const;

    /// The bytes of `type` as they were written; null when there is nothing of `type`. AppKit: `-dataForType:`.
    [[nodiscard]] QByteArray dataForType(const QString& type) const;

    /// Empties the pasteboard, which then takes what this program sets. AppKit: `-clearContents`.
    void clearContents();

    /// Puts `string` on the pasteboard as `type`, beside what this program has set since clearContents(). When another
    /// program has written in between, its contents are replaced. False, with nothing changed, when `type` is no text
    /// or there is no clipboard. AppKit: `-setString:forType:`.
    bool setString(const QString& string, const QString& type);

    /// Puts `data` on the pasteboard as `type`, under the rules of setString(). AppKit: `-setData:forType:`.
    bool setData(const QByteArray& data, const QString& type);

private:
    NSPasteboard();

    // What this program wrote last; gone as soon as another program takes the clipboard over.
    QPointer<QMimeData> m_written;
};
