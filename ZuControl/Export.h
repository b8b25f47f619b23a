#pragma once

/// Exported for plug-ins and hosts: the stable interface.
#define ZUCONTROL_API __attribute__((visibility("default")))

/// Exported for the tests alone and no part of the stable interface: `scripts/interface-dump` lists these symbols
/// apart.
#define ZUCONTROL_INTERNAL_API __attribute__((visibility("default")))
