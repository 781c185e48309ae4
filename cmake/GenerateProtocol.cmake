# SPDX-License-Identifier: Apache-2.0
# Runs the schema compiler:
#
#   cmake -D PROTOC=... -D SCHEMA=.../RuleService.proto -D OUTPUTS=cpp_out -D OUTPUT_DIR=... \
#     -P GenerateProtocol.cmake
#
# OUTPUTS are the compiler's options for languages, separated by commas.
#
# The schema has no syntax line, by contract. The compiler warns of that at each run;
# only that warning is dropped.

cmake_path(GET SCHEMA PARENT_PATH schema_dir)
cmake_path(GET SCHEMA FILENAME schema_name)
string(REPLACE "," ";" outputs "${OUTPUTS}")
list(TRANSFORM outputs REPLACE "(.+)" "--\\1=${OUTPUT_DIR}")

execute_process(
  COMMAND "${PROTOC}" "--proto_path=${schema_dir}" ${outputs} "${SCHEMA}"
  RESULT_VARIABLE result
  ERROR_VARIABLE remarks)

string(REGEX REPLACE "[^\n]*No (edition or )?syntax specified for the proto file: ${schema_name}[^\n]*\n?" ""
  remarks "${remarks}")
if(remarks)
  message("${remarks}")
endif()
if(NOT result EQUAL 0)
  message(FATAL_ERROR "The schema compiler failed on ${schema_name}: ${result}")
endif()
