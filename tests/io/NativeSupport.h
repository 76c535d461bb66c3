#pragma once

#include <cstddef>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/native/detail/NativeChartFields.h>
#include <tessarine/io/native/detail/NativeListFields.h>
#include <tessarine/platform/Files.h>

namespace tessarine::test {

using detail::VisitNativeFields;

inline void LoadNative(TWorkbook& ABook, std::string_view AText, const TTsrReadOptions& AOptions = {}) {
  TMemoryReadStream stream(std::as_bytes(std::span(AText)));
  TTsrIO::LoadFromStream(ABook, stream, AOptions);
}

inline std::string SavedNative(const TWorkbook& ABook, const TTsrWriteOptions& AOptions = {}) {
  TMemoryWriteStream stream;
  TTsrIO::SaveToStream(ABook, stream, AOptions);
  return {reinterpret_cast<const char*>(stream.Bytes().data()), stream.Bytes().size()};
}

/// Fills every field of a record that documents have with something of its kind.
class TNativeRandom {
 public:
  explicit TNativeRandom(uint32_t ASeed) : FRandom(ASeed) {}

  uint32_t Below(size_t ALimit) { return static_cast<uint32_t>(FRandom() % ALimit); }
  bool Flip() { return Below(2) == 0; }
  TText Text() {
    static constexpr std::u16string_view kTexts[] = {
        u"", u"plain", u"a \"quoted\" \\ text", u"tab\tline\r\nend\x01", u"\u00e9\u4e2d\U0001F600", u"=not a formula",
        u"x"};
    return kTexts[Below(std::size(kTexts))];
  }
  double Number() {
    static constexpr double kNumbers[] = {0, 1, -2.5, 0.1, 1.0 / 3, 1e-7, -1e300, 123456789012345678.0, 5e-324};
    return kNumbers[Below(std::size(kNumbers))];
  }
  template <class TRecord>
  TRecord Record() {
    TRecord record = detail::NewNativeRecord<TRecord>();
    Fill(record);
    return record;
  }

  template <class TValue>
  void operator()(std::string_view, TValue& AValue) {
    Fill(AValue);
  }
  template <class TValue>
  void When(bool, std::string_view, TValue& AValue) {
    Fill(AValue);
  }
  void AllBytes(std::string_view AName, std::vector<std::byte>& AValue) { Bytes(AName, AValue); }
  void Color(std::string_view, uint32_t& AValue) { Fill(AValue); }
  void Bytes(std::string_view, std::vector<std::byte>& AValue) {
    AValue.resize(1 + Below(5));
    for (std::byte& byte : AValue) byte = static_cast<std::byte>(Below(256));
  }

  void Fill(bool& AValue) { AValue = Flip(); }
  void Fill(double& AValue) { AValue = Number(); }
  void Fill(float& AValue) { AValue = static_cast<float>(Below(1000)) / 7; }
  void Fill(uint32_t& AValue) { AValue = static_cast<uint32_t>(FRandom()); }
  void Fill(int32_t& AValue) { AValue = static_cast<int32_t>(Below(2000)) - 5; }
  void Fill(uint8_t& AValue) { AValue = static_cast<uint8_t>(Below(256)); }
  void Fill(int64_t& AValue) { AValue = int64_t{1} << Below(53); }
  void Fill(TText& AValue) { AValue = Text(); }
  void Fill(TCellRange& AValue) {
    const auto col = static_cast<int32_t>(1 + Below(9));
    const auto row = static_cast<int32_t>(1 + Below(9));
    AValue = {col, row, col + static_cast<int32_t>(Below(5)), row + static_cast<int32_t>(Below(5))};
  }
  template <class TItem>
  void Fill(std::vector<TItem>& AValue) {
    AValue.resize(Below(3));
    for (TItem& item : AValue) Fill(item);
  }
  template <class TEnum>
  requires std::is_enum_v<TEnum>
  void Fill(TEnum& AValue) { AValue = static_cast<TEnum>(Below(static_cast<size_t>(detail::kLastNative<TEnum>) + 1)); }
  template <class TRecord>
  requires std::is_class_v<TRecord>
  void Fill(TRecord& AValue) { VisitNativeFields(*this, AValue); }

 private:
  std::mt19937 FRandom;
};

}  // namespace tessarine::test
