# Firebird::headers. The client library is loaded at run time.
find_path(Firebird_INCLUDE_DIR ibase.h)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Firebird REQUIRED_VARS Firebird_INCLUDE_DIR)

if(Firebird_FOUND AND NOT TARGET Firebird::headers)
    add_library(Firebird::headers INTERFACE IMPORTED)
    set_target_properties(Firebird::headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${Firebird_INCLUDE_DIR})
endif()
