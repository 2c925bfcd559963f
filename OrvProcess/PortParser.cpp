#include "OrvProcess/PortParser.h"
