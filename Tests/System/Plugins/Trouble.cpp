#include "Trouble.h"

Trouble const TROUBLE = Trouble::ZU_TEST_TROUBLE; // defined by the build of each plug-in
