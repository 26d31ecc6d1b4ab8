#include "SharedFiles/QVAlert.h"
