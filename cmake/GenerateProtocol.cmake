# SPDX-License-Identifier: Apache-2.0
# Runs the schema compiler:
#
#   cmake -D PROTOC=... -D SCHEMA=.../RuleService.proto -D OUTPUT_DIR=... -P GenerateProtocol.cmake
#
# The schema has no syntax line, by contract; the compiler remarks on that at
# each run. That remark is dropped here, and nothing else is.

cmake_path(GET SCHEMA PARENT_PATH schema_dir)
cmake_path(GET SCHEMA FILENAME schema_name)

execute_process(
  COMMAND "${PROTOC}" "--proto_path=${schema_dir}" "--cpp_out=${OUTPUT_DIR}" "${SCHEMA}"
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
