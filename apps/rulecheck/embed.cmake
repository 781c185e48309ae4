# SPDX-License-Identifier: Apache-2.0
# Writes the parts of the page as a source file that defines assets.h:
#
#   cmake -D DIRECTORY=... -D OUTPUT=.../assets.cpp -P embed.cmake
#
# A part becomes a list of byte values: no content of a part can end it early.

# What a browser computes of an inline style or script: its SHA-256 in base64.
function(content_hash file result)
  execute_process(COMMAND openssl dgst -sha256 -binary "${file}" COMMAND openssl base64
    OUTPUT_VARIABLE base64 OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "sha256-${base64}" PARENT_SCOPE)
endfunction()

set(source "#include \"rulecheck/assets.h\"\n\nnamespace rulecheck::assets {\nnamespace {\n\n")
set(definitions "")
foreach(part IN ITEMS page=page/page.html.mustache style=page/report.css script=page/report.js
    rules=lint/rules.txtpb)
  string(REGEX MATCH "^([a-z]+)=(.+)$" ignored "${part}")
  set(name "${CMAKE_MATCH_1}")
  set(file "${DIRECTORY}/${CMAKE_MATCH_2}")
  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND source "const char ${name}Bytes[] = {${bytes}};\n")
  string(APPEND definitions "const std::string_view ${name}{${name}Bytes, sizeof(${name}Bytes)};\n")
  if(name MATCHES "^(style|script)$")
    content_hash("${file}" hash)
    string(APPEND definitions "const std::string_view ${name}Hash{\"${hash}\"};\n")
  endif()
endforeach()
string(APPEND source "\n}  // namespace\n\n${definitions}\n}  // namespace rulecheck::assets\n")
file(WRITE "${OUTPUT}" "${source}")
