# cmake --install: the four libraries, the headers a host uses under
# include/caja, the CMake package (find_package(caja COMPONENTS ...), targets
# caja::caja, caja::dialogos, caja::sqlite, caja::postgres), pkg-config files
# and the host program; cpack -G DEB makes the packages "caja" (libraries and
# program) and "caja-dev" (the rest).
include(CMakePackageConfigHelpers)

set(CAJA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/caja)

# The public face: the facade, the types it hands over (the movement with its
# lines, documents, drawer transaction and payment methods), the interfaces a
# host implements or installs, the two database hosts, and the Qt dialogs'
# installer with the Qt message display. Every header here includes only headers of this list.
set(CAJA_CABECERAS_PUBLICAS
  base/CajaError.h base/Collection.h base/Currency.h base/Exporta.h base/Fecha.h base/Objeto.h
  base/Variant.h
  catalog/AtributosMedioPago.h catalog/CMedioPago.h catalog/ClaseIngresoSesion.h
  drawer/DetalleEfectivo.h drawer/TransaccionEfectivo.h
  movement/CDetalleConfirmacion.h movement/CDetalleDenominacion.h movement/CDetalleIngreso.h
  movement/CDocsMovCaja.h movement/CVarelta.h
  service/DialogosCaja.h service/Factoria.h service/HostUtil.h service/ObjetosHost.h
  service/Recordset.h service/Settings.h service/TransaccionHost.h
  facade/CServiciosCaja.h
  host/HostSql.h host/IniSettingsStore.h host/SqliteFactoria.h host/PostgresFactoria.h)
if(CAJA_WITH_QT)
  list(APPEND CAJA_CABECERAS_PUBLICAS dialogs/DialogosQt.h host/QtHostUtil.h)
endif()
foreach(cabecera IN LISTS CAJA_CABECERAS_PUBLICAS)
  get_filename_component(carpeta ${cabecera} DIRECTORY)
  install(FILES caja/${cabecera} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/caja/${carpeta}
    COMPONENT dev)
endforeach()
# The facade's header lay under service/ until 0.2; programs that include it
# from there keep compiling against the package.
file(WRITE ${PROJECT_BINARY_DIR}/anterior/CServiciosCaja.h
  "#pragma once\n#include \"caja/facade/CServiciosCaja.h\"\n")
install(FILES ${PROJECT_BINARY_DIR}/anterior/CServiciosCaja.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/caja/service COMPONENT dev)

# One export set per component, so that a host finds only what it asked for
# (and Qt only with the dialogs).
set(CAJA_COMPONENTES caja sqlite postgres)
if(CAJA_WITH_QT)
  list(APPEND CAJA_COMPONENTES dialogos)
endif()
foreach(componente IN LISTS CAJA_COMPONENTES)
  install(TARGETS caja_compartida_${componente} EXPORT caja-${componente}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
  install(EXPORT caja-${componente} NAMESPACE caja:: DESTINATION ${CAJA_CMAKE_DIR} COMPONENT dev)
endforeach()

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
caja_pkgconfig(caja "")
caja_pkgconfig(caja-sqlite caja)
caja_pkgconfig(caja-postgres caja)
if(CAJA_WITH_QT)
  caja_pkgconfig(caja-dialogos "caja Qt6Widgets")
endif()

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
