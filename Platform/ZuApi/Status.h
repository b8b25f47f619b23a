#pragma once

#include "wApi/wStatus.h" // the numbers stand on the lowest floor, where the calls that give them live
