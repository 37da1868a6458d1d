# cmake --install: the three libraries, their headers under include/caja, the
# CMake package (find_package(caja), targets caja::caja, caja::sqlite,
# caja::postgres), pkg-config files and the host program; cpack -G DEB makes
# the packages "caja" (libraries and program) and "caja-dev" (the rest).
include(CMakePackageConfigHelpers)

set(CAJA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/caja)

install(TARGETS caja caja_sqlite caja_postgres EXPORT cajaTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
foreach(carpeta IN LISTS CAJA_CARPETAS)
  install(DIRECTORY caja/${carpeta}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/caja/${carpeta}
    COMPONENT dev FILES_MATCHING PATTERN "*.h")
endforeach()
# The facade's header lay under service/ until 0.2; programs that include it
# from there keep compiling against the package.
file(WRITE ${PROJECT_BINARY_DIR}/anterior/CServiciosCaja.h
  "#pragma once\n#include \"caja/facade/CServiciosCaja.h\"\n")
install(FILES ${PROJECT_BINARY_DIR}/anterior/CServiciosCaja.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/caja/service COMPONENT dev)
install(EXPORT cajaTargets NAMESPACE caja:: DESTINATION ${CAJA_CMAKE_DIR} COMPONENT dev)

configure_package_config_file(cmake/cajaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cajaConfig.cmake INSTALL_DESTINATION ${CAJA_CMAKE_DIR})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cajaConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/cajaConfig.cmake ${PROJECT_BINARY_DIR}/cajaConfigVersion.cmake
  DESTINATION ${CAJA_CMAKE_DIR} COMPONENT dev)

# pkg-config files that find their prefix from where they lie, so that an
# installation moved with --prefix still works.
file(RELATIVE_PATH CAJA_PC_PREFIJO ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" CAJA_PC_PREFIJO "${CAJA_PC_PREFIJO}")
function(caja_pkgconfig CAJA_PC_NOMBRE CAJA_PC_REQUIERE)
  configure_file(cmake/caja.pc.in ${PROJECT_BINARY_DIR}/${CAJA_PC_NOMBRE}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${CAJA_PC_NOMBRE}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()
caja_pkgconfig(caja Qt6Widgets)
caja_pkgconfig(caja-sqlite caja)
caja_pkgconfig(caja-postgres caja-sqlite)

set(CPACK_PACKAGE_NAME caja)
set(CPACK_PACKAGE_VENDOR "caja")
set(CPACK_PACKAGE_CONTACT "Desarrolladores de caja <caja@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME caja)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# The dialogs' buttons in Spanish come from Qt's translations.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME caja-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "caja (= ${PROJECT_VERSION}), qt6-base-dev")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Cash collection for point-of-sale hosts: libraries and the caja program")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Cash collection for point-of-sale hosts: headers, CMake package and pkg-config files")
include(CPack)
