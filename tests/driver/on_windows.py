"""Runs one of the scripts on the program for Windows, under Wine: on_windows.py test_NAME. What it cannot look at there
is skipped by name, for the reason that stands here; a name that fits no test is a fault."""

import importlib
import sys
import unittest

NO_SIGNALS = "Windows has no signals"

LEFT_OUT = {
    "test_book.ProtocolTest.test_error_text_is_a_comment_where_both_streams_are_one":
        "Wine opens each stream of this system for itself; test_windows_only has one pipe of its own",
    "test_book_tool.BookToolTest.test_short_memory_is_said": "Wine itself needs more memory than the limit",
    "test_hostile_lines.Streams.test_streams_that_do_not_block_are_waited_for": "streams always block there",
    "test_hostile_lines.Signals.test_the_protocol_outlives_interrupts": NO_SIGNALS,
    "test_hostile_lines.Signals.test_the_console_is_ended_by_an_interrupt": NO_SIGNALS,
    "test_hostile_lines.Signals.test_a_termination_ends_every_state": NO_SIGNALS,
    "test_hostile_lines.Signals.test_an_interface_that_is_gone_ends_the_process_at_the_next_line":
        "no signal ends it there; test_windows_only has what does",
    "test_ponder.FailingThreads.test_each_thread_that_cannot_be_started_ends_the_process":
        "Wine's own threads meet the limit first",
    "test_startup.SharedInput.test_what_follows_quit_in_a_file_is_left_for_the_next_program":
        "the C library there gives nothing back that it has fetched",
}


def skip_left_out(module):
    """Marks what is left out of the module; returns the names that fit nothing."""
    unknown = []
    for name, reason in LEFT_OUT.items():
        module_name, class_name, method_name = name.split(".")
        if module_name != module.__name__:
            continue
        case = getattr(module, class_name, None)
        method = case and case.__dict__.get(method_name)
        if method is None:
            unknown.append(name)
        else:
            setattr(case, method_name, unittest.skip(reason)(method))
    return unknown


def main():
    module = importlib.import_module(sys.argv[1])
    unknown = skip_left_out(module)
    if unknown:
        sys.exit("no such tests: " + ", ".join(unknown))
    unittest.main(module=module, argv=[sys.argv[0], "-v", *sys.argv[2:]])


if __name__ == "__main__":
    main()
