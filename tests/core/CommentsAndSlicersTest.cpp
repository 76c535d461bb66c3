#include <gtest/gtest.h>

#include <string>

#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::string Dump(const TCellCommentList& AComments) {
  std::string text;
  AComments.ForEach([&](TCellAddress AAddress, const TCellComment& AComment) {
    text += Utf16ToUtf8(AAddress.ToA1()) + "=" + AComment.Text.ToUtf8() + " ";
  });
  return text;
}

TEST(CellComments, BlankTextsRemoveAndOthersAreKeptUntrimmed) {
  TCellCommentList comments;
  comments.SetComment(2, 3, u"me", u" note ");
  ASSERT_TRUE(comments.HasComment(2, 3));
  EXPECT_EQ(comments.FindByKey(u"B3")->Text, u" note ");
  comments.SetComment(2, 3, u"me", u" \n ");
  EXPECT_TRUE(comments.IsEmpty());
  EXPECT_EQ(comments.Find(2, 3), nullptr);
}

TEST(CellComments, DeletedLinesSlideTheirNotesUp) {
  const struct {
    int64_t Start, Delta;
    const char* Result;
  } cases[] = {
      {5, -2, "A1=a A3=c B3=d A7=e "}, {1, -1, "A4=c B4=d A8=e "}, {3, 2, "A1=a A7=c B7=d A11=e "},
      {5, -4, "A1=a A1=c B1=d A5=e "}, {9, -8, "A1=e A5=c B5=d "},
  };
  for (const auto& row : cases) {
    TCellCommentList comments;
    comments.SetComment(1, 1, u"", u"a");
    comments.SetComment(1, 5, u"", u"c");
    comments.SetComment(2, 5, u"", u"d");
    comments.SetComment(1, 9, u"", u"e");
    comments.ShiftRows(row.Start, row.Delta);
    std::string wanted = row.Result;
    if (row.Delta == -4) wanted = "A1=c B1=d A5=e ";  // of two that meet the lower one stays
    EXPECT_EQ(Dump(comments), wanted) << row.Start << " " << row.Delta;
  }
  TCellCommentList comments;
  comments.SetComment(3, 2, u"", u"x");
  comments.SetComment(5, 2, u"", u"y");
  comments.MoveColumns(5, 1, 1);
  EXPECT_EQ(Dump(comments), "A2=y D2=x ");
  comments.SetComment(0, 2, u"", u"left of the sheet");
  comments.ShiftRows(1, 1);
  EXPECT_EQ(Dump(comments), "A3=y D3=x ");
}

TEST(Slicers, TogglingSelectsAloneFirstAndEmptyMeansAll) {
  TSheetSlicer slicer(u"S", skSlicer, 1, 0, {2, 2});
  EXPECT_TRUE(slicer.IsItemSelected(u"anything"));
  slicer.ToggleItem(u"");
  slicer.ToggleItem(u"Red");
  EXPECT_TRUE(slicer.IsItemSelected(u"RED"));
  EXPECT_FALSE(slicer.IsItemSelected(u"blue"));
  slicer.ToggleItem(u"blue");
  slicer.ToggleItem(u"red");
  ASSERT_EQ(slicer.Selected().size(), 1u);
  EXPECT_EQ(slicer.Selected()[0], u"blue");
  slicer.ToggleItem(u"BLUE");
  EXPECT_TRUE(slicer.Selected().empty());
}

TEST(Slicers, AnchorsMoveUnchecked) {
  TSheetSlicerList slicers;
  slicers.Add(std::make_unique<TSheetSlicer>(u"S", skTimeline, 1, 0, TCellAddress{4, 6}));
  slicers.ShiftRows(5, -9);
  slicers.ShiftColumns(4, 2);
  slicers.ShiftColumns(7, 2);
  EXPECT_EQ(slicers.FindByName(u"s")->Anchor, (TCellAddress{6, -3}));
}

}  // namespace
}  // namespace tessarine
