// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetKind.h"

#include <VXKit/controls/LTNameTag.h>

/// A snippet's kind in a word, on a pill of its own. For another kind there is another tag.
class SnippetKindTag : public LTNameTag {
public:
    explicit SnippetKindTag(SnippetKind kind);

    [[nodiscard]] SnippetKind kind() const { return m_kind; }

    void drawRect(const NSRect& dirtyRect) override;

private:
    SnippetKind m_kind;
};
