#pragma once

#include <string_view>

/// The scripts of this folder, and how each ends: at its load or when its "main" is called.
namespace hostile {

enum class Ending {
    Done,     ///< without an error
    Error,    ///< by an error
    Survives, ///< by an error, by a limit or without any; engines differ
    Time,     ///< by its time limit
    Memory,   ///< by its memory limit
    Limited,  ///< by one of its limits; engines differ
    Refused,  ///< by an error, in the command alone: a host leaves it open to scripts that it trusts
    Watchdog, ///< by the end of the command: no limit of the library reaches it
};

struct Case {
    std::string_view name;
    Ending ending;
    /// What the report of its error contains.
    std::string_view report;
};

// clang-format off
inline constexpr Case cases[] = {
    {"loop", Ending::Time, ""},
    {"loop_at_load", Ending::Time, ""},
    {"loop_repeat_goto", Ending::Time, ""},
    {"loop_for_huge", Ending::Time, ""},
    {"loop_of_tail_calls", Ending::Time, ""},
    {"loop_of_protected_calls", Ending::Time, ""},
    {"loop_of_nested_protected_calls", Ending::Time, ""},
    {"loop_of_errors", Ending::Time, ""},
    {"loop_in_message_handler", Ending::Time, ""},
    {"loop_in_coroutine", Ending::Time, ""},
    {"loop_of_coroutines", Ending::Time, ""},
    {"loop_in_coroutine_made_before", Ending::Time, ""},
    {"loop_between_coroutines", Ending::Time, ""},
    {"loop_in_metamethod", Ending::Time, ""},
    {"loop_in_strict_globals", Ending::Time, ""},
    {"loop_in_comparison", Ending::Time, ""},
    {"loop_in_substitution", Ending::Time, ""},
    {"loop_in_reader", Ending::Time, ""},
    {"loop_of_sources", Ending::Time, ""},
    {"loop_in_finalizer_that_takes_memory", Ending::Limited, ""},
    {"loop_of_finalizers", Ending::Time, ""},
    {"loop_of_metatables", Ending::Error, ""},
    {"loop_in_index_chain", Ending::Error, ""},
    {"loop_of_native_functions", Ending::Time, ""},
    {"loop_with_hook_taken_away", Ending::Error, "the hook belongs to the time limit"},
    {"loop_with_everything_replaced", Ending::Time, ""},
    {"finalizer_without_end", Ending::Watchdog, ""},
    {"finalizer_without_end_at_the_end", Ending::Watchdog, ""},
    {"pattern_without_end", Ending::Watchdog, ""},
    {"pattern_of_dots_without_end", Ending::Watchdog, ""},
    {"native_loop", Ending::Watchdog, ""},
    {"memory_in_a_list", Ending::Memory, ""},
    {"memory_in_a_string", Ending::Memory, ""},
    {"memory_in_repeated_string", Ending::Memory, ""},
    {"memory_in_concatenation", Ending::Memory, ""},
    {"memory_in_coroutines", Ending::Memory, ""},
    {"memory_in_closures", Ending::Memory, ""},
    {"memory_without_collection", Ending::Memory, ""},
    {"memory_in_hash", Ending::Memory, ""},
    {"memory_in_source", Ending::Memory, ""},
    {"memory_in_format", Ending::Memory, ""},
    {"memory_in_substitution", Ending::Memory, ""},
    {"memory_in_userdata", Ending::Memory, ""},
    {"memory_again_and_again", Ending::Time, ""},
    {"recursion", Ending::Error, ""},
    {"recursion_in_substitution", Ending::Survives, ""},
    {"recursion_in_comparison", Ending::Survives, ""},
    {"recursion_in_coroutines", Ending::Survives, ""},
    {"recursion_in_resumed_coroutines", Ending::Survives, ""},
    {"recursion_in_tostring", Ending::Survives, ""},
    {"recursion_in_metamethods", Ending::Survives, ""},
    {"recursion_in_protected_calls", Ending::Survives, ""},
    {"recursion_in_message_handlers", Ending::Survives, ""},
    {"recursion_in_reader", Ending::Survives, ""},
    {"recursion_in_finalizers", Ending::Survives, ""},
    {"recursion_of_modules", Ending::Survives, ""},
    {"module_requires_itself", Ending::Error, ""},
    {"nested_parentheses", Ending::Done, ""},
    {"nested_tables", Ending::Done, ""},
    {"nested_functions", Ending::Done, ""},
    {"huge_source", Ending::Done, ""},
    {"unpack_far", Ending::Done, ""},
    {"pattern_of_many_repetitions", Ending::Error, "pattern too complex"},
    {"pattern_of_many_repetitions_step_by_step", Ending::Error, "pattern too complex"},
    {"numbers_at_the_edge", Ending::Done, ""},
    {"format_of_any_kind", Ending::Done, ""},
    {"sort_without_order", Ending::Survives, ""},
    {"length_that_lies", Ending::Survives, ""},
    {"finalizer_that_raises", Ending::Survives, ""},
    {"strict_globals_that_raise", Ending::Error, "undeclared"},
    {"globals_without_main", Ending::Survives, ""},
    {"globals_that_are_something_else", Ending::Done, ""},
    {"alert_that_raises", Ending::Error, ""},
    {"alert_without_end", Ending::Time, ""},
    {"error_value_nil", Ending::Error, ""},
    {"error_value_boolean", Ending::Error, ""},
    {"error_value_number", Ending::Error, ""},
    {"error_value_table", Ending::Error, ""},
    {"error_value_function", Ending::Error, ""},
    {"error_value_coroutine", Ending::Error, ""},
    {"error_value_proxy", Ending::Error, ""},
    {"error_value_broken_text", Ending::Error, ""},
    {"error_at_load", Ending::Error, "status 4"},
    {"answer_of_groups_in_themselves", Ending::Survives, ""},
    {"answer_of_numbers_at_the_edge", Ending::Survives, ""},
    {"answer_with_metatables_that_raise", Ending::Survives, ""},
    {"strings_with_a_metatable", Ending::Survives, ""},
    {"library_of_input_replaced", Ending::Done, ""},
    {"end_of_the_process", Ending::Refused, "os.exit"},
    {"environment_replaced", Ending::Survives, ""},
    {"collector_tricks", Ending::Done, ""},
    {"coroutine_tricks", Ending::Survives, ""},
    {"yield_from_the_segment", Ending::Error, ""},
    {"host_functions_with_wrong_arguments", Ending::Survives, ""},
};
// clang-format on

} // namespace hostile
