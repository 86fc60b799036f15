// What makes one module differ from another: compiled for each.
#include "adapters/frei0r/module.h"

const char kModuleEffect[] = AVEFFECT_MODULE;
