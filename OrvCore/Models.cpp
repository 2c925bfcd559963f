#include "OrvCore/Models.h"
