# What `cmake --install` puts where, the CMake package and the pkg-config
# file of the library, the manual page of dvnbt and the Debian package.
#
#   bin/dvnbt
#   lib/libdvnbdbbe.so.* and the sibling libraries it needs
#   include/dvnbdbbe/       the public headers and what they include
#   lib/cmake/dvnbdbbe/     find_package(dvnbdbbe CONFIG)
#   lib/pkgconfig/dvnbdbbe.pc
#   share/dvnbdbbe/         schema scripts and examples
#   share/man/man1/dvnbt.1
include(CMakePackageConfigHelpers)

set(DVN_INSTALL_LIBRARIES dvnbdbbe dvnkernn dvnfcorn dvnfffdn)
set(DVN_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/dvnbdbbe)

# The installed program and libraries find the libraries beside them under
# any prefix (RUNPATH applies to an object's own needs only, so each library
# carries one too).
file(RELATIVE_PATH _dvn_bin_to_lib /p/${CMAKE_INSTALL_BINDIR} /p/${CMAKE_INSTALL_LIBDIR})
set_target_properties(${DVN_INSTALL_LIBRARIES} PROPERTIES INSTALL_RPATH "$ORIGIN")

if(TARGET dvnbt)
  set_target_properties(dvnbt PROPERTIES INSTALL_RPATH "$ORIGIN/${_dvn_bin_to_lib}")
  install(TARGETS dvnbt RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(TARGETS ${DVN_INSTALL_LIBRARIES} EXPORT dvnbdbbeTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# Public headers: the facade, the authorization, the reader and the contracts
# of the sibling libraries, with every header they include, side by side.
set(_dvn_header_dirs "")
foreach(dir recordsets storedforms dvnbauth dvnbdbbe dvnbdbfe dvnbdbif dvnbdbrd
            contracts/dvnkernn contracts/dvnfcorn contracts/dvnfffdn)
  list(APPEND _dvn_header_dirs ${PROJECT_SOURCE_DIR}/src/${dir})
endforeach()
install(CODE "
  include(\"${PROJECT_SOURCE_DIR}/cmake/DvnHeaderClosure.cmake\")
  file(GLOB _dvn_contracts \"${PROJECT_SOURCE_DIR}/src/contracts/*/*.h\")
  dvn_header_closure(_dvn_headers
    ROOTS \"${PROJECT_SOURCE_DIR}/src/dvnbdbif/dvnbdbif.h\" \"${PROJECT_SOURCE_DIR}/src/dvnbauth/dvnbauth.h\"
          \"${PROJECT_SOURCE_DIR}/src/dvnbdbrd/dvnbdbrd.h\" \${_dvn_contracts}
    DIRS ${_dvn_header_dirs})
  file(INSTALL DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}/dvnbdbbe\"
       TYPE FILE FILES \${_dvn_headers})
")

install(DIRECTORY ${PROJECT_SOURCE_DIR}/schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/dvnbdbbe/schema)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/dvnbdbbe/examples)

# The CMake package.
install(EXPORT dvnbdbbeTargets NAMESPACE dvnbdbbe:: DESTINATION ${DVN_CMAKE_PACKAGE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/dvnbdbbeConfig.cmake.in
  ${PROJECT_BINARY_DIR}/dvnbdbbeConfig.cmake INSTALL_DESTINATION ${DVN_CMAKE_PACKAGE_DIR})
# 0.x: a new minor version may change the calls.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/dvnbdbbeConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/dvnbdbbeConfig.cmake ${PROJECT_BINARY_DIR}/dvnbdbbeConfigVersion.cmake
        DESTINATION ${DVN_CMAKE_PACKAGE_DIR})

# The pkg-config file, relative to its own folder.
file(RELATIVE_PATH DVN_PC_TO_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
string(REGEX REPLACE "/$" "" DVN_PC_TO_PREFIX "${DVN_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/dvnbdbbe.pc.in ${PROJECT_BINARY_DIR}/dvnbdbbe.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/dvnbdbbe.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The manual page of dvnbt, made from docs/cli.md at build time.
find_package(Perl)
if(TARGET dvnbt AND PERL_FOUND)
  set(DVN_MANPAGE ${PROJECT_BINARY_DIR}/tools/dvnbt/dvnbt.1)
  add_custom_command(OUTPUT ${DVN_MANPAGE}
    COMMAND ${PERL_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/manpage.pl ${PROJECT_SOURCE_DIR}/docs/cli.md
            ${PROJECT_VERSION} ${DVN_MANPAGE}
    DEPENDS ${PROJECT_SOURCE_DIR}/scripts/manpage.pl ${PROJECT_SOURCE_DIR}/docs/cli.md
    COMMENT "Manual page dvnbt.1 from docs/cli.md" VERBATIM)
  add_custom_target(dvnbt_manpage ALL DEPENDS ${DVN_MANPAGE})
  install(FILES ${DVN_MANPAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
elseif(TARGET dvnbt)
  message(STATUS "perl not found: no manual page for dvnbt")
endif()

# The Debian package: `cpack -G DEB` in the build folder. dpkg-shlibdeps
# names the libraries the binaries link (unixODBC, libcrypto, the C++
# runtime); the SQLite ODBC driver is loaded by name at run time, so it is
# named here.
set(CPACK_PACKAGE_NAME dvnbdbbe)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "database back end of a workflow build-time tool, with the command line dvnbt")
set(CPACK_PACKAGE_DESCRIPTION
    "Converts process definitions between their in-memory model and a relational schema reached through ODBC (an embedded SQLite file or PostgreSQL), and checks build-time users and their rights.")
set(CPACK_PACKAGE_CONTACT "dvnbdbbe developers <dvnbdbbe@localhost>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libsqliteodbc")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "odbc-postgresql, unixodbc-dev, libssl-dev, sqlite3")
include(CPack)
