#include <gtest/gtest.h>

#include <meridex/sync/SchemeFileCollection.h>

using namespace meridex;

namespace {

SchemeFileItem Named(const std::string& key) {
    SchemeFileItem item;
    item.setKey(key);
    return item;
}

}  // namespace

TEST(SchemeFileCollection, KeepsOrderFindsByNumberOrKeyIgnoringCaseAndRefusesAKeyTwice) {
    SchemeFileCollection list;
    ASSERT_TRUE(list.Add(Named("/A.SXS"), "/A.SXS"));
    ASSERT_TRUE(list.Add(Named("/B.SXS"), "/B.SXS"));
    ASSERT_TRUE(list.Add(Named("/C.SXS"), "/C.SXS"));
    EXPECT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(2).Key(), "/B.SXS");
    EXPECT_EQ(list.Item("/c.sxs").Key(), "/C.SXS");
    EXPECT_TRUE(list.Item(0).IsNull());
    EXPECT_TRUE(list.Item(4).IsNull());
    EXPECT_TRUE(list.Item("/D.SXS").IsNull());

    // An item taken out of the collection is the item in it.
    list.Item(1).setSyncOptions(syncRevert);
    EXPECT_EQ(list.Item("/A.SXS").SyncOptions(), syncRevert);

    // Removal closes the gap in the numbering.
    EXPECT_TRUE(list.Remove(1));
    EXPECT_TRUE(list.Remove("/c.SXS"));
    EXPECT_FALSE(list.Remove("/C.SXS"));
    EXPECT_EQ(list.Count(), 1);
    EXPECT_EQ(list.Item(1).Key(), "/B.SXS");
    ASSERT_TRUE(list.Add(Named("/A.SXS"), "/A.SXS"));
    EXPECT_EQ(list.Items().back().Key(), "/A.SXS");

    // A key already present is refused and the first item kept.
    SchemeFileItem first = list.Item("/B.SXS");
    EXPECT_FALSE(list.Add(Named("second"), "/b.sxs"));
    EXPECT_FALSE(list.Add(SchemeFileItem::None(), "/OTHER.SXS"));
    EXPECT_EQ(list.Count(), 2);
    EXPECT_TRUE(list.Item(1) == first);
    list.Clear();
    EXPECT_TRUE(list.Item("/B.SXS").IsNull());
}
