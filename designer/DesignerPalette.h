// SPDX-License-Identifier: MIT
#pragma once

#include <span>

/// What Designer is told of a class of the kit.
struct DesignerClass {
    const char* className;        ///< as nibs know it (NSNib::viewClasses)
    const char* includeFile;      ///< the header that code made from a form includes
    const char* extends;          ///< the class of Qt's that stands in for it where there is no plugin
    const char* objectName;       ///< of the first one in a form
    const char* summary;          ///< one line, for the tool tip
    const char* explanation = ""; ///< what a person is to know beyond that
    int width;                    ///< of one that is dropped into a form, in points
    int height;                   ///< likewise
    int leastWidth = 0;           ///< of one that is dropped into a form, for what tells layouts no size of its own
    int leastHeight = 0;          ///< likewise
    const char* properties = "";  ///< more of what is dropped into a form, in the XML of forms
    bool isContainer = false;     ///< whether other widgets can be dropped into it
};

/// The classes that Designer offers, in the order of its list: the dark controls, and then the platform's.
///
/// What they are made by is the nibs' list of classes. Of that, the view of a status item has no place in a form; all
/// the others are here, which the tests see to.
[[nodiscard]] std::span<const DesignerClass> designerClasses();
