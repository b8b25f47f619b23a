#pragma once

/// The step in its life at which a plug-in fails.
enum class Trouble
{
    ABORTING_INITIALISER,
    EXITING_INITIALISER,
    HANGING_INITIALISER,
    MISSING_FACTORY,
    EMPTY_FACTORY,
    THROWING_FACTORY,
    THROWING_CONSTRUCTOR,
    ABORTING_CONSTRUCTOR,
    THROWING_START,
    FAILING_START,
    THROWING_RESULTS,
    FOREIGN_RESULTS,
    HANGING_STOP,
    THROWING_STOP,
    ABORTING_DESTRUCTOR,
    KEPT_PROTOCOL,
    LOGGED_ERROR,
    TAKEN_NAME,     ///< no other fault
    TAKEN_NUMBER,   ///< no other fault: the number of ModbusTcp
    HOSTS_NUMBER,   ///< no other fault: the number of the host
    TWIN_NUMBERS,   ///< no other fault: two types with one number
    BAD_NAME,       ///< no other fault: a blank in the type name
    NEEDED_HARDWARE ///< no other fault: its start looks up an output of the sensor
};

/// Each plug-in has its own.
extern Trouble const TROUBLE;
