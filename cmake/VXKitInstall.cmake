# What is installed of the library: itself, its public headers, and what CMake and pkg-config need to find it.
include(CMakePackageConfigHelpers)

# Sets `result` to the public headers: the umbrella header and all that it leads to. A header that it does not lead to is
# no host's business.
function(vxkit_public_headers result)
  set(headers "")
  set(unread VXKit/VXKit.h)
  while(unread)
    list(POP_FRONT unread header)
    set(path "${PROJECT_SOURCE_DIR}/${header}")
    if(NOT EXISTS "${path}") # made by the build
      continue()
    endif()
    list(APPEND headers "${path}")
    file(STRINGS "${path}" includes REGEX "^#include <VXKit/")
    foreach(include IN LISTS includes)
      string(REGEX REPLACE "^#include <([^>]*)>.*" "\\1" include "${include}")
      if(NOT "${PROJECT_SOURCE_DIR}/${include}" IN_LIST headers AND NOT include IN_LIST unread)
        list(APPEND unread "${include}")
      endif()
    endforeach()
  endwhile()
  set(${result} ${headers} PARENT_SCOPE)
endfunction()

set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  "${PROJECT_SOURCE_DIR}/VXKit/VXKit.h")
vxkit_public_headers(publicHeaders)
# Two sets, because the build folder may lie within the source folder, and then their roots would be one within the other.
target_sources(VXKit PUBLIC
  FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${publicHeaders}
  FILE_SET madeHeaders TYPE HEADERS
    BASE_DIRS "${PROJECT_BINARY_DIR}/include" FILES "${PROJECT_BINARY_DIR}/include/VXKit/VXKitExport.h")

install(TARGETS VXKit EXPORT VXKit
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
  FILE_SET madeHeaders DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
)

set(configFolder "${CMAKE_INSTALL_LIBDIR}/cmake/VXKit")
set(VXKIT_CONFIG_QT_COMPONENTS Widgets)
set(VXKIT_PC_REQUIRES "Qt6Widgets >= ${VXKIT_QT_VERSION}")
set(VXKIT_PC_DEFINITIONS "")
if(NOT BUILD_SHARED_LIBS)
  # Whoever links the archive links what it is made of.
  set(VXKIT_CONFIG_QT_COMPONENTS ${VXKIT_QT_COMPONENTS})
  list(TRANSFORM VXKIT_QT_COMPONENTS PREPEND Qt6 OUTPUT_VARIABLE requires)
  list(TRANSFORM requires APPEND " >= ${VXKIT_QT_VERSION}")
  list(APPEND requires ${VXKIT_XCB_MODULES} ${VXKIT_DW_MODULES})
  list(JOIN requires ", " VXKIT_PC_REQUIRES)
  set(VXKIT_PC_DEFINITIONS " -DVXKIT_STATIC_DEFINE")
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VXKitConfig.cmake.in" VXKitConfig.cmake
  INSTALL_DESTINATION "${configFolder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(VXKitConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT VXKit
  NAMESPACE VXKit:: FILE VXKitTargets.cmake DESTINATION "${configFolder}" COMPONENT development)
install(
  FILES "${CMAKE_CURRENT_BINARY_DIR}/VXKitConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/VXKitConfigVersion.cmake"
  DESTINATION "${configFolder}" COMPONENT development)

# Below the prefix everything is said relative to the file itself, so that the whole may be moved.
set(pcFolder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
if(IS_ABSOLUTE "${pcFolder}")
  set(VXKIT_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH upwards "/prefix/${pcFolder}" /prefix)
  string(REGEX REPLACE "/$" "" upwards "${upwards}")
  set(VXKIT_PC_PREFIX "\${pcfiledir}/${upwards}")
endif()
foreach(kind IN ITEMS LIBDIR INCLUDEDIR)
  set(VXKIT_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  if(NOT IS_ABSOLUTE "${VXKIT_PC_${kind}}")
    string(PREPEND VXKIT_PC_${kind} "\${prefix}/")
  endif()
endforeach()
configure_file("${PROJECT_SOURCE_DIR}/cmake/vxkit.pc.in" vxkit.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/vxkit.pc" DESTINATION "${pcFolder}" COMPONENT development)

# The font Inter is in the library. Not with the runtime, which another major version may stand beside.
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/VXKit/resources/Inter-LICENSE.txt"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
