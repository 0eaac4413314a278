// SPDX-License-Identifier: MIT
// The whole kit in one header.
#pragma once

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/database/LTDatabase.h>
#include <VXKit/database/LTSnippetArray.h>
#include <VXKit/database/_LTSnippet.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSFormat.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>
#include <VXKit/platform/foundation/NSPropertyList.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>
#include <VXKit/support/VXKitResources.h>
#include <VXKit/support/VXLog.h>
