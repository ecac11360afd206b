#include <gtest/gtest.h>

#include <meridex/addressbook/Site.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XMLOps.h>

namespace meridex {
namespace {

XmlNode Element(const std::string& name, const std::string& text) {
    XmlNode element = XMLOps::CreateXMLElement(name);
    element.setText(text);
    return element;
}

TEST(Site, NewSiteHoldsOnlyAnEmptyProfile) {
    Site site;
    EXPECT_EQ(site.XMLNode().Name(), "SITE");
    EXPECT_EQ(site.XMLNode().CountChildElements(), 1u);
    EXPECT_FALSE(site.Profile().IsNull());
    EXPECT_EQ(site.ParameterCount(), 0);
    EXPECT_EQ(site.Path(), "");
}

TEST(Site, ParametersAreFoundByExactNameOrPosition) {
    Site site;
    ASSERT_TRUE(site.Add(Element("BAUDRATE", "9600")));
    ASSERT_TRUE(site.Add(Element("abc", "lower")));
    ASSERT_TRUE(site.Add(Element("ADDRESS", "10.0.0.1")));
    EXPECT_EQ(site.Parameter("abc").Text(), "lower");
    EXPECT_TRUE(site.Parameter("ABC").IsNull());
    EXPECT_EQ(site.Parameter(3).Text(), "10.0.0.1");
    EXPECT_TRUE(site.Parameter(0).IsNull());
    EXPECT_TRUE(site.Parameter(4).IsNull());
    // A name that is no element name finds nothing rather than failing.
    EXPECT_TRUE(site.Parameter("not a name").IsNull());
    EXPECT_FALSE(site.Remove("not a name"));

    // Replacing keeps the count and moves the parameter to the end.
    ASSERT_TRUE(site.Add(Element("BAUDRATE", "19200")));
    EXPECT_EQ(site.ParameterCount(), 3);
    EXPECT_EQ(site.Parameter(3).Name(), "BAUDRATE");
    EXPECT_EQ(site.Parameter("BAUDRATE").Text(), "19200");

    EXPECT_TRUE(site.Remove(1));
    EXPECT_EQ(site.Parameter(1).Name(), "ADDRESS");
    EXPECT_FALSE(site.Remove("abc"));

    EXPECT_FALSE(site.SetParameter("1BAD", "x"));
    EXPECT_FALSE(site.SetParameter("", "x"));
    EXPECT_EQ(site.ParameterCount(), 2);
    EXPECT_TRUE(site.SetParameter("PHONENUMBER", "0123"));
    EXPECT_EQ(site.Parameter("PHONENUMBER").Text(), "0123");
}

TEST(Site, BindingAndProfileReplacement) {
    XMLFactoryLease lease;
    XmlNode bare = XMLOps::CreateXMLElement("SITE");
    Site site(bare);
    EXPECT_FALSE(site.Profile().IsNull()) << "a bound site without PROFILE is given one";

    XmlNode profile = XMLOps::CreateXMLElement("PROFILE");
    profile.AppendChild(Element("TYPE", "IP"));
    site.setProfile(profile);
    EXPECT_EQ(bare.CountChildElements("PROFILE"), 1u);
    EXPECT_EQ(site.Parameter("TYPE").Text(), "IP");
    site.setProfile(bare);  // cannot go inside itself: the profile stays
    EXPECT_EQ(site.Parameter("TYPE").Text(), "IP");
    site.setProfile(XmlNode());
    EXPECT_TRUE(site.Profile().IsNull());
    // Adding a parameter to a site that lost its profile gives it a new one.
    EXPECT_TRUE(site.SetParameter("TYPE", "RS232"));
    EXPECT_EQ(site.ParameterCount(), 1);

    Site none = Site::None();
    EXPECT_TRUE(none.IsNull());
    none.setName("x");
    EXPECT_EQ(none.Name(), "");
    EXPECT_EQ(none.ParameterCount(), 0);
    EXPECT_FALSE(none.SetParameter("A", "1"));
    EXPECT_TRUE(Site(XmlNode()).IsNull());
}

}  // namespace
}  // namespace meridex
