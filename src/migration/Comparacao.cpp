#include "Comparacao.h"
