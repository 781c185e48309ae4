#include "mutation.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace fuzz {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

Mutation::Mutation(unsigned seed, const Words& words) : random_(seed), words_(words) {}

std::size_t Mutation::below(std::size_t count) {
  return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
}

void Mutation::change(Message* message) {
  const auto* descriptor = message->GetDescriptor();
  const int index = static_cast<int>(below(static_cast<std::size_t>(descriptor->field_count())));
  const FieldDescriptor* field = descriptor->field(index);
  const Reflection* reflection = message->GetReflection();
  if (field->is_repeated()) {
    changeList(message, field);
  } else if (!reflection->HasField(*message, field)) {
    set(message, field);
  } else if (oneIn(5)) {
    reflection->ClearField(message, field);
  } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
    change(reflection->MutableMessage(message, field));
  } else {
    set(message, field);
  }
}

void Mutation::changeList(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  const int size = reflection->FieldSize(*message, field);
  if (size == 0 || oneIn(3)) {
    add(message, field);
    return;
  }
  const int index = static_cast<int>(below(static_cast<std::size_t>(size)));
  if (oneIn(3)) {
    reflection->SwapElements(message, field, index, size - 1);
    reflection->RemoveLast(message, field);
  } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
    change(reflection->MutableRepeatedMessage(message, field, index));
  } else {
    reflection->SetRepeatedString(
        message, field, index, text(field, reflection->GetRepeatedString(*message, field, index)));
  }
}

void Mutation::fill(Message* message) {
  const auto* descriptor = message->GetDescriptor();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* field = descriptor->field(i);
    if (oneIn(3)) {
      continue;
    }
    if (field->is_repeated()) {
      add(message, field);
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      fill(message->GetReflection()->MutableMessage(message, field));
    } else {
      set(message, field);
    }
  }
}

void Mutation::complete(Message* message) {
  const auto* descriptor = message->GetDescriptor();
  const Reflection* reflection = message->GetReflection();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* field = descriptor->field(i);
    if (field->is_required() && !reflection->HasField(*message, field)) {
      set(message, field);
    }
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    if (field->is_repeated()) {
      for (int j = 0; j < reflection->FieldSize(*message, field); ++j) {
        complete(reflection->MutableRepeatedMessage(message, field, j));
      }
    } else if (reflection->HasField(*message, field)) {
      complete(reflection->MutableMessage(message, field));
    }
  }
}

void Mutation::set(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_MESSAGE:
      change(reflection->MutableMessage(message, field));
      return;
    case FieldDescriptor::CPPTYPE_STRING:
      reflection->SetString(message, field, text(field, reflection->GetString(*message, field)));
      return;
    case FieldDescriptor::CPPTYPE_INT32:
      reflection->SetInt32(message, field, static_cast<std::int32_t>(number()));
      return;
    case FieldDescriptor::CPPTYPE_INT64: reflection->SetInt64(message, field, number()); return;
    case FieldDescriptor::CPPTYPE_UINT32:
      reflection->SetUInt32(message, field, static_cast<std::uint32_t>(number()));
      return;
    case FieldDescriptor::CPPTYPE_DOUBLE: reflection->SetDouble(message, field, real()); return;
    case FieldDescriptor::CPPTYPE_BOOL: reflection->SetBool(message, field, oneIn(2)); return;
    case FieldDescriptor::CPPTYPE_ENUM: {
      const auto count = static_cast<std::size_t>(field->enum_type()->value_count());
      reflection->SetEnum(message, field,
                          field->enum_type()->value(static_cast<int>(below(count))));
      return;
    }
    default: return;  // the protocol has no other fields
  }
}

void Mutation::add(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
    reflection->AddString(message, field, text(field, ""));
  } else {
    fill(reflection->AddMessage(message, field));
  }
}

const std::vector<std::string>& Mutation::wordsFor(const FieldDescriptor* field) {
  const std::string name(field->name());
  auto found = words_.find(std::string(field->containing_type()->name()) + "." + name);
  if (found == words_.end()) {
    found = words_.find(name);
  }
  return found == words_.end() || oneIn(5) ? words_.at("") : found->second;
}

std::string Mutation::text(const FieldDescriptor* field, const std::string& current) {
  if (!oneIn(5)) {
    const auto& words = wordsFor(field);
    return words[below(words.size())];
  }
  if (oneIn(3)) {
    return std::string(below(80), 'n');
  }
  std::string changed = current;
  change(&changed);
  return changed;
}

void Mutation::change(std::string* bytes) {
  constexpr std::size_t kGrowth = 8;
  const std::size_t size = bytes->size();
  bytes->resize(size + kGrowth);
  bytes->resize(
      LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(&(*bytes)[0]), size, bytes->size()));
}

std::int64_t Mutation::number() {
  using Limits = std::numeric_limits<std::int64_t>;
  using Limits32 = std::numeric_limits<std::int32_t>;
  const std::int64_t remarkable[] = {Limits::min(), Limits::max(), Limits32::min(), Limits32::max(),
                                     Limits32::max() + std::int64_t{1}};
  if (oneIn(4)) {
    return remarkable[below(std::size(remarkable))];
  }
  return static_cast<std::int64_t>(below(oneIn(4) ? Limits32::max() : 10)) - 2;
}

double Mutation::real() {
  using Limits = std::numeric_limits<double>;
  const double remarkable[] = {0.0,
                               0.5,
                               2.5,
                               0.9999995,
                               1e20,
                               Limits::max(),
                               Limits::min(),
                               Limits::denorm_min(),
                               Limits::infinity(),
                               Limits::quiet_NaN()};
  const double sign = oneIn(2) ? 1 : -1;
  const auto whole = static_cast<double>(below(std::size_t{1} << below(53)));
  switch (below(4)) {
    case 0: return sign * remarkable[below(std::size(remarkable))];
    case 1: return sign * whole / std::pow(10, static_cast<int>(below(12)));
    case 2:  // halfway between two texts
      return sign * (whole + static_cast<double>(2 * below(64) + 1) / 128);
    default: break;
  }
  const std::uint64_t bits = std::uint64_t{random_()} << 32 | random_();
  double number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

std::size_t put(const std::string& bytes, std::uint8_t* data, std::size_t size,
                std::size_t maxSize) {
  if (bytes.size() > maxSize) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  std::copy(bytes.begin(), bytes.end(), data);
  return bytes.size();
}

}  // namespace fuzz
