#include <gtest/gtest.h>

#include <type_traits>

#include "TempDir.h"
#include <meridex/addressbook/Site.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/settings/Feature.h>
#include <meridex/settings/Profile.h>
#include <meridex/settings/Profiles.h>
#include <meridex/sync/FileInfo.h>
#include <meridex/sync/SchemeFileItem.h>

using namespace meridex;

// Every handle type of the public API says "none" the same way: None() makes
// one, IsNull() and an explicit bool test for it.
namespace {

template <typename T>
class NullViews : public ::testing::Test {
protected:
    XMLFactoryLease lease;
    test::TempDir dir;
};

// A handle on something real, of each type.
template <typename T> T Real(const test::TempDir& dir) {
    if constexpr (std::is_same_v<T, XmlNode>) return XmlDocument::Parse("<A/>").DocumentElement();
    else if constexpr (std::is_same_v<T, XmlDocument>) return XmlDocument::New();
    else if constexpr (std::is_same_v<T, FileInfo>) return FileInfo::FromPath(dir.Write("a.sxs", "x"));
    else return T();
}

using HandleTypes =
    ::testing::Types<XmlNode, XmlDocument, Site, SiteGroup, Profile, Profiles, Feature, SchemeFileItem, FileInfo>;
TYPED_TEST_SUITE(NullViews, HandleTypes);

}  // namespace

TYPED_TEST(NullViews, NoneIsNullAndFalseAndARealOneIsNeither) {
    // The bool is explicit: a handle never slips into arithmetic or a bool parameter.
    static_assert(!std::is_convertible_v<TypeParam, bool>);
    static_assert(std::is_constructible_v<bool, TypeParam>);
    static_assert(std::is_same_v<decltype(TypeParam::None()), TypeParam>);

    const TypeParam none = TypeParam::None();
    EXPECT_TRUE(none.IsNull());
    EXPECT_FALSE(static_cast<bool>(none));

    const TypeParam real = Real<TypeParam>(this->dir);
    EXPECT_FALSE(real.IsNull());
    EXPECT_TRUE(static_cast<bool>(real));
}
