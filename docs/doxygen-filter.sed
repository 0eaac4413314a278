# What doxygen is to read of a header otherwise than it stands there; no line is added or taken out, so that doxygen's
# messages name the right ones.

# Every header is a file of the reference: of its functions and constants, and with its opening comment as what it is for.
1s|^// SPDX.*|/// \\file|
0,/^#pragma once/s|^// |/// |

# How the kit's classes take Qt's events and answer Qt's questions comes of what their own operations promise, so there
# is nothing to tell of these, but where somebody did: the hold space has the line before.
/^ +(\[\[nodiscard\]\] )?[A-Za-z].* \*?([A-Za-z]+\(Q[A-Za-z]*Event\* .*|(eventFilter|sizeHint|minimumSizeHint|initViewItemOption|redirected|sharedPainter)\(.*)\)( const)? override;/{
  x
  /^ *\/\/\//!{
    x
    s|.*||
    x
  }
  x
}

# What a property is, is told where it is read and set.
/^ *Q_PROPERTY/s|.*||

# Templates are documented once, not for each class that the library holds them for.
/^extern template class /s|.*||
h
