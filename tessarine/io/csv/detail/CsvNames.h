#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarine::detail {

/// A path without the extension of its last part, "a.b/c.txt" giving "a.b/c". A leading dot begins no extension.
std::string WithoutExtension(const std::string& AFileName);

/// AText with every unit that is no letter, digit, blank, "-" or "_" replaced by "_", trimmed; "Sheet" when empty.
std::u16string FileNamePart(std::u16string_view AText);

/// File name parts that differ from one another, also where the file system takes no notice of case: the second "Data"
/// is "Data_2".
class TFileNameParts {
 public:
  std::string Add(std::u16string_view AText);

 private:
  std::vector<std::u16string> FTaken;  // in upper case
};

}  // namespace tessarine::detail
