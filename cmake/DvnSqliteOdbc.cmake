# Finds the SQLite ODBC driver library that `dvnbt --db` loads, the way the
# program looks for it again at run time (EmbeddedDriverPath): the driver that
# unixODBC has registered as "SQLite3" (odbcinst -q -d -n SQLite3), its bare
# library name resolved in the platform's library folders, and otherwise
# libsqlite3odbc.so in those folders.
#
# Sets:
#   DVN_SQLITE_ODBC_DRIVER_PATH  the library found at configure time, or empty
#                                (a cache entry DVN_SQLITE_ODBC_DRIVER given by
#                                hand wins)
#   DVN_ODBC_SYSTEM_DIR          the folder of unixODBC's system odbcinst.ini
#                                (odbcinst -j), /etc when unknown

set(DVN_ODBC_SYSTEM_DIR "/etc")
set(_dvn_registered "")
find_program(DVN_ODBCINST odbcinst)
if(DVN_ODBCINST)
  # The folder as unixODBC was built, not one that $ODBCSYSINI points to now.
  execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=ODBCSYSINI ${DVN_ODBCINST} -j OUTPUT_VARIABLE _dvn_out ERROR_QUIET RESULT_VARIABLE _dvn_rc)
  if(_dvn_rc EQUAL 0 AND _dvn_out MATCHES "DRIVERS\\.*: *([^\n]*)")
    string(STRIP "${CMAKE_MATCH_1}" _dvn_ini)
    get_filename_component(DVN_ODBC_SYSTEM_DIR "${_dvn_ini}" DIRECTORY)
  endif()
  execute_process(COMMAND ${DVN_ODBCINST} -q -d -n SQLite3 OUTPUT_VARIABLE _dvn_out ERROR_QUIET RESULT_VARIABLE _dvn_rc)
  if(_dvn_rc EQUAL 0 AND _dvn_out MATCHES "(^|\n)[ \t]*[Dd][Rr][Ii][Vv][Ee][Rr][ \t]*=([^\n]*)")
    string(STRIP "${CMAKE_MATCH_2}" _dvn_registered)
  endif()
endif()

set(DVN_SQLITE_ODBC_DRIVER_PATH "")
if(DVN_SQLITE_ODBC_DRIVER)
  set(DVN_SQLITE_ODBC_DRIVER_PATH "${DVN_SQLITE_ODBC_DRIVER}")
elseif(IS_ABSOLUTE "${_dvn_registered}" AND EXISTS "${_dvn_registered}")
  set(DVN_SQLITE_ODBC_DRIVER_PATH "${_dvn_registered}")
else()
  set(_dvn_names libsqlite3odbc.so)
  if(_dvn_registered)
    get_filename_component(_dvn_name "${_dvn_registered}" NAME)
    list(PREPEND _dvn_names "${_dvn_name}")
  endif()
  # find_library looks in lib/<multiarch> of every prefix; the drivers live in
  # its odbc subfolder on Debian.
  find_library(DVN_SQLITE_ODBC_LIBRARY NAMES ${_dvn_names} PATH_SUFFIXES odbc)
  if(DVN_SQLITE_ODBC_LIBRARY)
    set(DVN_SQLITE_ODBC_DRIVER_PATH "${DVN_SQLITE_ODBC_LIBRARY}")
  endif()
endif()

if(DVN_SQLITE_ODBC_DRIVER_PATH)
  message(STATUS "SQLite ODBC driver: ${DVN_SQLITE_ODBC_DRIVER_PATH}")
else()
  message(WARNING "SQLite ODBC driver not found (Debian: apt-get install libsqliteodbc); "
                  "dvnbt --db looks for it again at run time")
endif()
