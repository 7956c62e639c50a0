# Damaged, hostile and real archives, and what is listed of them.
set(TEST_COMMAND_SOURCES_A
    bad_input_number_fields_test.cpp bad_input_name_field_test.cpp bad_input_long_names_test.cpp
    bad_input_member_names_test.cpp bad_input_truncation_test.cpp bad_input_sizes_test.cpp
    bad_input_symbol_table_test.cpp bad_input_whole_file_test.cpp bad_input_forgiven_test.cpp
    real_input_listing_test.cpp real_input_contents_test.cpp real_input_rewriting_test.cpp
    real_input_peers_test.cpp listing_test.cpp)
