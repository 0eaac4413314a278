// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QFrame>
#include <QObject>

extern template class VXKIT_EXPORT ViewOf<QFrame>;

/// A box around other views, or a line between them: what Qt's frame of it draws, nothing at first. It has no title.
///
/// Stands for AppKit's class of the same name, as far as lines go.
class VXKIT_EXPORT NSBox : public ViewOf<QFrame> {
    Q_OBJECT

public:
    /// A box without a frame, for a layout of Qt's.
    explicit NSBox(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit NSBox(const NSRect& frame, QWidget* parent = nullptr);
    ~NSBox() override;
};
