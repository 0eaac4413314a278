// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/appkit/NSView.h>

#include <memory>
#include <utility>

/// Where a page shows what it is about: a flipped view, so that pages are laid out from the top, as they are read.
class Stage : public NSView {
public:
    static constexpr NSSize standardSize{424, 432}; // points

    explicit Stage(const NSRect& frame) { NSView::setFrame(frame); }

    [[nodiscard]] bool isFlipped() const override { return true; }

    /// Makes a view of the class `View` with `frame` and further arguments, and puts it onto the stage, which owns it.
    template <class View, class... Arguments>
    View& put(const NSRect& frame, Arguments&&... arguments) {
        auto view = [&] {
            if constexpr (std::is_constructible_v<View, const NSRect&, Arguments...>) {
                return std::make_unique<View>(frame, std::forward<Arguments>(arguments)...);
            } else {
                return std::make_unique<View>(std::forward<Arguments>(arguments)...);
            }
        }();
        ViewCore::of(view.get())->setFrame(frame);
        addSubview(view.get());
        return *view.release();
    }

    /// The same for a text that explains.
    NSTextField& putText(const NSRect& frame, const QString& text, double fontSize = 11);
};

/// Makes `field` a text in white, as it stands on dark panels.
void makeWhite(NSTextField& field, const QString& text, const NSFont& font);
/// The same, a little darker, for a text that explains.
void makeExplaining(NSTextField& field, const QString& text, const NSFont& font);
