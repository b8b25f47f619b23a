#include "Trouble.h"

Trouble const TROUBLE = Trouble::ZU_TEST_TROUBLE; // as the build says
