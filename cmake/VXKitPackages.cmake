# Debian packages of what is installed, one for each part: `cpack` in the build folder, or scripts/check-package.sh, which
# also tries them in a clean system.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vxkit)
set(CPACK_PACKAGE_VENDOR "The VXKit authors")
set(CPACK_PACKAGE_CONTACT "The VXKit authors <vxkit@localhost>" CACHE STRING "Name and address of who makes the packages")
# Empty, because it would stand above the summary of every package.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES TRUE)
set(CPACK_VERBATIM_VARIABLES TRUE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL TRUE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS TRUE)
# The other parts' programs find the library here while their needs are looked up; that they need it is said below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/VXKit")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS TRUE)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(runtimePackage "libvxkit${PROJECT_VERSION_MAJOR}")
set(needsRuntime "${runtimePackage} (= ${PROJECT_VERSION})")
if(NOT BUILD_SHARED_LIBS)
  set(needsRuntime "")
endif()
get_cmake_property(installed COMPONENTS)

# vxkit_package(COMPONENT name NAME package SECTION section SUMMARY text DESCRIPTION text
#               [DEPENDS packages…] [RECOMMENDS packages…] [SUGGESTS packages…])
#
# Makes a package of the files that are installed for a component, where there are any.
macro(vxkit_package)
  cmake_parse_arguments(package "" "COMPONENT;NAME;SECTION;SUMMARY;DESCRIPTION" "DEPENDS;RECOMMENDS;SUGGESTS" ${ARGN})
  if(package_COMPONENT IN_LIST installed)
    list(APPEND CPACK_COMPONENTS_ALL ${package_COMPONENT})
    string(TOUPPER ${package_COMPONENT} component)
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package_NAME})
    set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${package_SECTION})
    set(CPACK_DEBIAN_${component}_DESCRIPTION "${package_SUMMARY}\n${package_DESCRIPTION}")
    foreach(relation IN ITEMS DEPENDS RECOMMENDS SUGGESTS)
      list(JOIN package_${relation} ", " CPACK_DEBIAN_${component}_PACKAGE_${relation})
    endforeach()
    # Each package says under which terms it is; elsewhere one copy of the licences will do.
    install(FILES "${PROJECT_BINARY_DIR}/copyright"
      DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package_NAME}" COMPONENT ${package_COMPONENT} EXCLUDE_FROM_ALL)
  endif()
endmacro()

file(READ "${PROJECT_SOURCE_DIR}/LICENSE" VXKIT_LICENCE)
file(READ "${PROJECT_SOURCE_DIR}/VXKit/resources/Inter-LICENSE.txt" VXKIT_FONT_LICENCE)
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/copyright" CONTENT [[VXKit

@VXKIT_LICENCE@
The library contains the font Inter, which is under these terms:

@VXKIT_FONT_LICENCE@]] @ONLY)

set(CPACK_COMPONENTS_ALL "")
vxkit_package(COMPONENT runtime NAME ${runtimePackage} SECTION libs
  SUMMARY "user-interface and services kit for menu-bar applications"
  DESCRIPTION "VXKit gives small menu-bar applications windows, controls, a status item and a\n\
store for snippets, shaped like AppKit and built on Qt.\n\
.\n\
This package holds the library."
  RECOMMENDS qt6-qpa-plugins
  SUGGESTS vxkit-webengine)
set(needed "${needsRuntime}" "qt6-base-dev (>= ${VXKIT_QT_VERSION})")
if(NOT BUILD_SHARED_LIBS)
  set(needed "qt6-base-dev (>= ${VXKIT_QT_VERSION})" qt6-svg-dev "qt6-tools-dev (>= ${VXKIT_QT_VERSION})" pkgconf
    libdw-dev libxcb-ewmh-dev libxcb-icccm4-dev libxcb-shape0-dev libxcb-xinput-dev)
endif()
vxkit_package(COMPONENT development NAME libvxkit-dev SECTION libdevel
  SUMMARY "user-interface and services kit, development files"
  DESCRIPTION "VXKit gives small menu-bar applications windows, controls, a status item and a\n\
store for snippets, shaped like AppKit and built on Qt.\n\
.\n\
This package holds the headers and what CMake and pkg-config need to find them."
  DEPENDS ${needed})
vxkit_package(COMPONENT webengine NAME vxkit-webengine SECTION libs
  SUMMARY "user-interface and services kit, web engine plugin"
  DESCRIPTION "With this plugin the web views of programs that use VXKit, such as their help\n\
windows, are a browser. Without it they show text and pictures only."
  DEPENDS ${needsRuntime})
vxkit_package(COMPONENT designer NAME vxkit-designer SECTION devel
  SUMMARY "user-interface and services kit, plugin for Qt Designer"
  DESCRIPTION "With this plugin Qt Designer shows the views and controls of VXKit as they are,\n\
for the forms of programs that use it."
  DEPENDS ${needsRuntime}
  RECOMMENDS designer-qt6)
vxkit_package(COMPONENT snippets NAME vxkit-snippets SECTION utils
  SUMMARY "keeps pieces of text within reach, in the status bar"
  DESCRIPTION "Snippets lives in the status bar of the desktop and keeps pieces of text that are\n\
wanted again. It is the example program of VXKit."
  DEPENDS ${needsRuntime}
  RECOMMENDS qt6-qpa-plugins vxkit-webengine)
include(CPack)
