#include "Pacote.h"
