// SPDX-License-Identifier: Apache-2.0

#include "mutation.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace fuzz {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

bool isMessage(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

}  // namespace

void Mutation::change(Message* message) {
  const auto* descriptor = message->GetDescriptor();
  const auto count = static_cast<std::size_t>(descriptor->field_count());
  const FieldDescriptor* field = descriptor->field(static_cast<int>(below(count)));
  if (field->is_repeated()) {
    changeList(message, field);
  } else if (message->GetReflection()->HasField(*message, field) && oneIn(5)) {
    message->GetReflection()->ClearField(message, field);
  } else {
    set(message, field);
  }
}

void Mutation::changeList(Message* message, const FieldDescriptor* field) {
  const auto* reflection = message->GetReflection();
  const int size = reflection->FieldSize(*message, field);
  if (size == 0 || oneIn(3)) {
    add(message, field);
    return;
  }
  reflection->SwapElements(message, field, static_cast<int>(below(static_cast<std::size_t>(size))),
                           size - 1);
  if (isMessage(field) && !oneIn(3)) {
    change(reflection->MutableRepeatedMessage(message, field, size - 1));
  } else {
    reflection->RemoveLast(message, field);
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
    } else if (isMessage(field)) {
      fill(message->GetReflection()->MutableMessage(message, field));
    } else {
      set(message, field);
    }
  }
}

void Mutation::complete(Message* message) {
  const auto* descriptor = message->GetDescriptor();
  const auto* reflection = message->GetReflection();
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor* field = descriptor->field(i);
    if (field->is_repeated()) {
      for (int j = 0; isMessage(field) && j < reflection->FieldSize(*message, field); ++j) {
        complete(reflection->MutableRepeatedMessage(message, field, j));
      }
      continue;
    }
    if (field->is_required() && !reflection->HasField(*message, field)) {
      set(message, field);
    }
    if (isMessage(field) && reflection->HasField(*message, field)) {
      complete(reflection->MutableMessage(message, field));
    }
  }
}

void Mutation::set(Message* message, const FieldDescriptor* field) {
  const auto* reflection = message->GetReflection();
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
  const auto* reflection = message->GetReflection();
  if (isMessage(field)) {
    fill(reflection->AddMessage(message, field));
  } else {
    reflection->AddString(message, field, text(field, ""));
  }
}

std::string Mutation::text(const FieldDescriptor* field, std::string current) {
  if (oneIn(5)) {
    change(&current);
    return current;
  }
  const std::string name(field->name());
  auto found = words_.find(std::string(field->containing_type()->name()) + "." + name);
  if (found == words_.end()) {
    found = words_.find(name);
  }
  const auto& words = found == words_.end() || oneIn(5) ? words_.at("") : found->second;
  return words[below(words.size())];
}

void Mutation::change(std::string* bytes) {
  const std::size_t size = bytes->size();
  bytes->resize(size + 8);
  bytes->resize(
      LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(&(*bytes)[0]), size, bytes->size()));
}

// Of any length, often small, and now and then an extreme.
std::int64_t Mutation::number() {
  const auto bits = static_cast<std::int64_t>(random_() >> 1 >> below(63));
  switch (below(8)) {
    case 0: return std::numeric_limits<std::int64_t>::min();
    case 1: return std::numeric_limits<std::int32_t>::min();
    case 2: return -bits;
    default: return oneIn(2) ? bits : static_cast<std::int64_t>(below(10));
  }
}

// Any bits, or a number that can be halfway between two texts.
double Mutation::real() {
  const std::uint64_t bits = random_();
  double number = static_cast<double>(static_cast<std::int64_t>(bits) >> below(64)) / 128;
  if (oneIn(3)) {
    std::memcpy(&number, &bits, sizeof number);
  }
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
