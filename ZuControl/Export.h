#pragma once

/// What plug-ins and hosts use: the promised interface.
#define ZUCONTROL_API __attribute__((visibility("default")))

/// Exported for the tests alone and outside the promised interface: `scripts/interface-dump` lists these symbols apart.
#define ZUCONTROL_INTERNAL_API __attribute__((visibility("default")))
