# SPDX-License-Identifier: Apache-2.0
# The schema compiler that belongs to the runtime found by VokProtobuf:
# VOK_PROTOC. Stops the configuration with one sentence if the build cannot succeed.

if(VOK_PROTOBUF_ERROR)
  message(FATAL_ERROR "${VOK_PROTOBUF_ERROR}")
endif()

# Two copies of the runtime in one process would have separate pools of schemas.
get_target_property(vok_protobuf_type protobuf::libprotobuf TYPE)
if(vok_protobuf_type STREQUAL "STATIC_LIBRARY" OR Protobuf_LIBRARY_RELEASE MATCHES "\\.a$")
  message(FATAL_ERROR
    "Protocol Buffers ${VOK_PROTOBUF_RELEASE} was found as a static library: a shared one is needed.")
endif()

if(NOT TARGET protobuf::protoc)
  message(FATAL_ERROR
    "protoc, the compiler of Protocol Buffers ${VOK_PROTOBUF_RELEASE}, was not found: install it with its runtime.")
endif()
get_target_property(VOK_PROTOC protobuf::protoc LOCATION)

execute_process(COMMAND "${VOK_PROTOC}" --version
  OUTPUT_VARIABLE vok_protoc_version RESULT_VARIABLE vok_protoc_result
  ERROR_VARIABLE vok_protoc_version OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT vok_protoc_result EQUAL 0 OR NOT vok_protoc_version STREQUAL "libprotoc ${VOK_PROTOBUF_RELEASE}")
  message(FATAL_ERROR
    "The schema compiler ${VOK_PROTOC} (\"${vok_protoc_version}\") does not match the runtime, Protocol Buffers ${VOK_PROTOBUF_RELEASE}: install both from one release.")
endif()

message(STATUS "Protocol Buffers ${VOK_PROTOBUF_RELEASE}, schema compiler ${VOK_PROTOC}")
