// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>

#include <QObject>
#include <QWidget>

/// An NSView for Designer, which tells classes by the names in their meta-objects and writes those into forms. NSView
/// is an instance of a template, and a template has no meta-object: so moc, which makes them, reads of a class NSView
/// here. All else takes this for what it is, an NSView without anything of its own.
class
#ifdef Q_MOC_RUN
    NSView : public QWidget
#else
    DesignerView : public NSView
#endif
{
    Q_OBJECT

#ifndef Q_MOC_RUN
public:
    /// A view without a frame.
    explicit DesignerView(QWidget* parent = nullptr) : NSView(parent) {}
#endif
};
