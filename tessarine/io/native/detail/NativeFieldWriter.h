#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <tessarine/core/values/Text.h>
#include <tessarine/io/native/detail/NativeFields.h>
#include <tessarine/platform/Base64.h>
#include <tessarine/platform/JsonWriter.h>

namespace tessarine::detail {

/// The double that a single-precision number is written as: the one with the fewest digits that still rounds to it.
double ShortestNative(float AValue);

/// Writes the fields of records into the object that is open: the visitor of VisitNativeFields for writing.
class TNativeFieldWriter {
 public:
  explicit TNativeFieldWriter(TJsonWriter& AJson) : FJson(AJson) {}

  template <class TValue>
  void operator()(std::string_view AName, const TValue& AValue) {
    FJson.Name(AName);
    Write(AValue);
  }
  template <class TValue>
  void When(bool AIsWritten, std::string_view AName, const TValue& AValue) {
    if (AIsWritten) (*this)(AName, AValue);
  }
  void Color(std::string_view AName, uint32_t AValue) { (*this)(AName, AValue); }
  void Bytes(std::string_view AName, std::span<const std::byte> AValue) {
    if (!AValue.empty()) AllBytes(AName, AValue);
  }
  /// The same, also for no bytes at all.
  void AllBytes(std::string_view AName, std::span<const std::byte> AValue) {
    FBase64.clear();
    AppendBase64(AValue, FBase64);
    FJson.Name(AName);
    FJson.Text(FBase64);
  }

  void Write(bool AValue) { FJson.Boolean(AValue); }
  void Write(double AValue) { FJson.Number(AValue); }
  void Write(float AValue) { FJson.Number(ShortestNative(AValue)); }
  void Write(const TText& AValue) { FJson.Text(AValue.View()); }

  template <class TValue>
  requires std::is_integral_v<TValue>
  void Write(TValue AValue) { FJson.Integer(static_cast<int64_t>(AValue)); }
  template <class TEnum>
  requires std::is_enum_v<TEnum>
  void Write(TEnum AValue) { FJson.Integer(static_cast<int64_t>(AValue)); }
  template <class TItem>
  void Write(const std::vector<TItem>& AValue) {
    FJson.BeginArray();
    for (const TItem& item : AValue) Write(item);
    FJson.EndArray();
  }
  template <class TRecord>
  requires std::is_class_v<TRecord>
  void Write(const TRecord& AValue) {
    FJson.BeginObject();
    VisitNativeFields(*this, AValue);
    FJson.EndObject();
  }

 private:
  TJsonWriter& FJson;
  std::string FBase64;
};

}  // namespace tessarine::detail
