// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class GalleryWindow;
class PictureBook;

/// Takes pictures of every page of `window` and of what it is about, into `book`, and writes the sheet of all of them.
/// Nothing moves or blinks meanwhile but what a picture stops at a stated moment. False where a picture could not be
/// written; the book tells which.
[[nodiscard]] bool takeGalleryPictures(GalleryWindow& window, PictureBook& book);
