#include "TipoBanco.h"
