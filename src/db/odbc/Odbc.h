#pragma once

// ODBC's headers take the system's types for granted where that is Windows.
#ifdef _WIN32
#include <windows.h>
#endif

#include <sql.h>
#include <sqlext.h>
