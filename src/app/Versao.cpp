#include "CodigoDeSaida.h"
