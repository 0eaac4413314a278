// SPDX-License-Identifier: MIT
#include "GalleryPage.h"

#include "pages/AlertsPage.h"
#include "pages/ButtonsPage.h"
#include "pages/CheckBoxesPage.h"
#include "pages/CopyPopUpPage.h"
#include "pages/ExceptionReporterPage.h"
#include "pages/FlipPage.h"
#include "pages/HUDWindowPage.h"
#include "pages/HelpPage.h"
#include "pages/ImagesPage.h"
#include "pages/LinePage.h"
#include "pages/MainWindowPage.h"
#include "pages/NameTagPage.h"
#include "pages/NibPage.h"
#include "pages/PopAndZoomPage.h"
#include "pages/PreferenceTabsPage.h"
#include "pages/ProgressPage.h"
#include "pages/ResizeCornersPage.h"
#include "pages/SwitchableViewPage.h"
#include "pages/TablePage.h"
#include "pages/TextFieldsPage.h"
#include "pages/WindowEffectsPage.h"

namespace {

template <class... Pages>
std::vector<std::unique_ptr<GalleryPage>> make() {
    std::vector<std::unique_ptr<GalleryPage>> pages;
    (pages.push_back(std::make_unique<Pages>()), ...);
    return pages;
}

} // namespace

std::vector<std::unique_ptr<GalleryPage>> makeGalleryPages() {
    return make<ButtonsPage, CheckBoxesPage, TextFieldsPage, TablePage, ProgressPage, LinePage, NameTagPage,
                ResizeCornersPage, CopyPopUpPage, HUDWindowPage, AlertsPage, MainWindowPage, WindowEffectsPage,
                SwitchableViewPage, PreferenceTabsPage, FlipPage, PopAndZoomPage, HelpPage, ExceptionReporterPage,
                NibPage, ImagesPage>();
}
