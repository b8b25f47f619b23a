#pragma once

#include <string_view>

namespace ZuControl::Plc
{

/// The words that IEC 61131-3 reserves, in lower case and in order. The names of conversions, such as "INT_TO_REAL", are not
/// among them.
inline constexpr std::string_view RESERVED_WORDS[] = {
    // clang-format off
    "abs", "abstract", "acos", "action", "add", "and", "any", "any_bit", "any_char", "any_chars", "any_date",
    "any_derived", "any_duration", "any_elementary", "any_int", "any_magnitude", "any_num", "any_real", "any_signed",
    "any_string", "any_unsigned", "array", "asin", "at", "atan", "atan2", "bool", "by", "byte", "case", "char",
    "class", "concat", "concat_date", "concat_date_ltod", "concat_date_tod", "concat_dt", "concat_ldt", "concat_ltod",
    "concat_tod", "configuration", "constant", "continue", "cos", "ctd", "ctd_dint", "ctd_lint", "ctd_udint",
    "ctd_ulint", "ctu", "ctu_dint", "ctu_lint", "ctu_udint", "ctu_ulint", "ctud", "ctud_dint", "ctud_lint",
    "ctud_udint", "ctud_ulint", "date", "date_and_time", "day_of_week", "delete", "dint", "div", "divtime", "do",
    "dt", "dword", "else", "elsif", "en", "end_action", "end_case", "end_class", "end_configuration", "end_for",
    "end_function", "end_function_block", "end_if", "end_interface", "end_method", "end_namespace", "end_program",
    "end_repeat", "end_resource", "end_step", "end_struct", "end_transition", "end_type", "end_var", "end_while",
    "eno", "eq", "exit", "exp", "expt", "extends", "f_edge", "f_trig", "false", "final", "find", "for", "from",
    "function", "function_block", "ge", "gt", "if", "implements", "initial_step", "insert", "int", "interface",
    "internal", "interval", "is_valid", "is_valid_bcd", "ld", "ldate", "ldate_and_time", "ldt", "le", "left", "len",
    "limit", "lint", "ln", "log", "lower_bound", "lreal", "lt", "ltime", "ltime_of_day", "ltod", "lword", "max",
    "method", "mid", "min", "mod", "move", "mul", "multime", "mux", "namespace", "ne", "non_retain", "not", "null",
    "of", "on", "or", "overlap", "override", "priority", "private", "program", "protected", "public", "r_edge",
    "r_trig", "read_only", "read_write", "real", "ref", "ref_to", "repeat", "replace", "resource", "retain", "return",
    "right", "rol", "ror", "round", "rs", "sel", "shl", "shr", "sin", "single", "sint", "split_date", "split_dt",
    "split_ldate", "split_ldt", "split_ltod", "split_tod", "sqrt", "sr", "step", "string", "struct", "sub", "super",
    "t", "tan", "task", "then", "this", "time", "time_of_day", "to", "tod", "tof", "ton", "tp", "transition", "true",
    "trunc", "type", "udint", "uint", "ulint", "until", "upper_bound", "using", "usint", "var", "var_access",
    "var_config", "var_external", "var_global", "var_in_out", "var_input", "var_output", "var_temp", "wchar", "while",
    "with", "word", "wstring", "xor",
    // clang-format on
};

} // namespace ZuControl::Plc
