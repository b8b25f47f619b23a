#pragma once

/// What plug-ins and hosts use: the promised interface.
#define ZUCONTROL_API __attribute__((visibility("default")))

/// What only tests reach from outside; no part of the promised interface.
#define ZUCONTROL_INTERNAL_API __attribute__((visibility("default")))
