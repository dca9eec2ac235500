# What cpack needs to know.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vyr)
set(CPACK_PACKAGE_VENDOR Tarnwick)
set(CPACK_PACKAGE_CONTACT "${VYR_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_LIST_DIR}/debian/postinst;${CMAKE_CURRENT_LIST_DIR}/debian/postrm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "control program of the VYR laser light source")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The VYR is a laser light source with eight channels from 405 to 730 nm on a
USB serial port. This program switches the laser between idle and run, sets
intensities, opens and closes shutters, shows faults, warnings and fiber
interlocks, keeps settings as scenarios and updates the firmware.

The package also holds the manual, a demo of the program on a simulated light
source, the simulation alone for tests of other software, and the rule that
lets users open the device's port.")

# cpack asks for the moment, too, and may be started by hand.
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/PackageDate.cmake"
  "if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})\n  set(ENV{SOURCE_DATE_EPOCH} ${VYR_EPOCH})\nendif()\n")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_BINARY_DIR}/PackageDate.cmake")

include(CPack)
