# Firebird::client, the client library that also loads the embedded engine.
find_path(Firebird_INCLUDE_DIR ibase.h)
find_library(Firebird_LIBRARY NAMES fbclient)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Firebird REQUIRED_VARS Firebird_LIBRARY Firebird_INCLUDE_DIR)

if(Firebird_FOUND AND NOT TARGET Firebird::client)
    add_library(Firebird::client UNKNOWN IMPORTED)
    set_target_properties(Firebird::client PROPERTIES IMPORTED_LOCATION ${Firebird_LIBRARY}
                          INTERFACE_INCLUDE_DIRECTORIES ${Firebird_INCLUDE_DIR})
endif()
