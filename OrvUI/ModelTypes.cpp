#include "OrvUI/ModelTypes.h"
