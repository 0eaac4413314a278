// SPDX-License-Identifier: MIT
#include <designer/DesignerView.h>

// What moc has made is for the class that it has read of.
#define NSView DesignerView
#include "moc_DesignerView.cpp"
#undef NSView
