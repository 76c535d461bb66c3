#include "WorkbookFiles.h"

#include "../support/CaseTable.h"
#include "../support/TemporaryFolder.h"
#include "../support/ZipBuilder.h"

namespace tessarine::test {

void WriteSampleWorkbook(const std::string& AFileName) {
  TZipBuilder zip;
  for (const TCase& part : CasesOf("cli/sample_workbook.tsv", 2)) zip.Add(part[0], part[1]);
  const std::vector<std::byte> bytes = zip.Finish();
  WriteFile(AFileName, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace tessarine::test
