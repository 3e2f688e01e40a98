#include "connection/Connection.h"
