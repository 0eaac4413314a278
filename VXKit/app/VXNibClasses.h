// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

/// Lets nibs have objects of the kit's classes above the platform, by their names; the platform's own are known to
/// NSNib by itself. Called by the application object and by view loaders; a program without either calls it before it
/// instantiates a nib. Once is enough, further calls do nothing, so that a host may put classes of its own in place.
VXKIT_EXPORT void VXRegisterNibClasses();
