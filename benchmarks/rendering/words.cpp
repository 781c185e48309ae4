#include "rendering/words.h"

namespace benchmarks {

using namespace vok::rulecheck;

const char* word(Resource_Scheme scheme) {
  switch (scheme) {
    case Resource::DATA: return "data";
    case Resource::FILE: return "file";
    case Resource::FTP: return "ftp";
    case Resource::HTTP: return "http";
    case Resource::HTTPS: return "https";
    case Resource::IRC: return "irc";
    case Resource::MAILTO: return "mailto";
  }
  return "unknown";
}

const char* word(Reference_RefType type) {
  switch (type) {
    case Reference::ARRAY: return "array";
    case Reference::AXI: return "AXI";
    case Reference::CHANNEL: return "channel";
    case Reference::CONDITION: return "condition";
    case Reference::CONSTRAINT: return "constraint";
    case Reference::CONVERSION: return "conversion";
    case Reference::CORE: return "core";
    case Reference::DATAMOVER: return "data mover";
    case Reference::DATA_TYPE: return "data type";
    case Reference::DDR_BANK: return "DDR bank";
    case Reference::FILE: return "file";
    case Reference::FUNCTION: return "function";
    case Reference::HIERARCHY: return "hierarchy";
    case Reference::INTERFACE: return "interface";
    case Reference::KERNEL: return "kernel";
    case Reference::LOOP: return "loop";
    case Reference::MEMORY: return "memory";
    case Reference::OPERATION: return "operation";
    case Reference::OPERATOR: return "operator";
    case Reference::OTHER: return "other";
    case Reference::PCIE: return "PCIE";
    case Reference::PORT: return "port";
    case Reference::PRAGMA: return "pragma";
    case Reference::PREDICATE: return "predicate";
    case Reference::READ_OP: return "READ OP";
    case Reference::REGION: return "region";
    case Reference::SYSTEM: return "system";
    case Reference::VARIABLE: return "variable";
    case Reference::WRITE_OP: return "WRITE OP";
  }
  return "<undefined>";
}

const char* word(Violation_Severity severity) {
  switch (severity) {
    case Violation::SEV_FATAL: return "fatal";
    case Violation::SEV_ERROR: return "error";
    case Violation::SEV_CRITICAL_WARNING: return "critical warning";
    case Violation::SEV_WARNING: return "warning";
    case Violation::SEV_ADVISORY: return "advisory";
    case Violation::SEV_UNKNOWN: break;
  }
  return "<undefined>";
}

const char* addressPrefix(Resource_Scheme scheme) {
  switch (scheme) {
    case Resource::DATA: return "data:";
    case Resource::FILE: return "file://";
    case Resource::HTTP: return "http://";
    case Resource::HTTPS: return "https://";
    default: return "";
  }
}

}  // namespace benchmarks
