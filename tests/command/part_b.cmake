# Running the program as its users do: options, edit actions, and all that files can do to a run.
set(TEST_COMMAND_SOURCES_B
    run_sequence_test.cpp
    options_argument_test.cpp options_concatenation_test.cpp options_spelling_test.cpp
    options_wildcard_test.cpp
    insert_files_test.cpp insert_header_test.cpp insert_merge_test.cpp insert_update_test.cpp
    delete_test.cpp move_test.cpp extract_test.cpp print_test.cpp symbol_table_test.cpp
    file_failure_extract_test.cpp file_failure_input_test.cpp file_failure_size_test.cpp
    file_failure_sweep_test.cpp file_failure_write_test.cpp interruption_test.cpp)
