# Where things are installed: the GNU folders, and on Debian the library folder of the machine's architecture, where
# packages have their libraries and the loader, pkg-config and CMake look for them under any prefix of the system's.
if(PROJECT_IS_TOP_LEVEL AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE AND NOT CMAKE_CROSSCOMPILING)
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Where object code libraries are installed")
endif()
include(GNUInstallDirs)
