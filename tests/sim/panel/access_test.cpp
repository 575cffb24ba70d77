// Tests of who may ask the panel.
#include "sim/panel/access.h"

#include <gtest/gtest.h>

namespace {

using sim::Access;
using sim::Asked;

char const* const kToken = "00112233445566778899aabbccddeeff";

Asked reading(std::string const& path) {
    return {path, "127.0.0.1:8123", "", "", false};
}

Asked command() {
    return {"/00112233445566778899aabbccddeeff/command", "127.0.0.1:8123", "http://127.0.0.1:8123", "same-origin",
            true};
}

class PanelAccessTest : public testing::Test {
protected:
    Access const access_{8123, kToken};
};

TEST_F(PanelAccessTest, AddressHoldsTheToken) {
    EXPECT_EQ(access_.address(), "http://127.0.0.1:8123/00112233445566778899aabbccddeeff/");
    EXPECT_EQ(access_.name_in("/00112233445566778899aabbccddeeff/events"), "events");
}

TEST_F(PanelAccessTest, PageOfThisAddressIsServed) {
    EXPECT_EQ(access_.refusal(reading("/00112233445566778899aabbccddeeff/")), "");
    EXPECT_EQ(access_.refusal(command()), "");
    Asked typed = reading("/00112233445566778899aabbccddeeff/");
    typed.fetch_site = "none";
    EXPECT_EQ(access_.refusal(typed), "");
    Asked by_name = command();
    by_name.host = "localhost:8123";
    by_name.origin = "http://localhost:8123";
    EXPECT_EQ(access_.refusal(by_name), "");
}

TEST_F(PanelAccessTest, WrongTokenIsRefused) {
    for (char const* const path : {"", "/", "/events", "//", "/00112233445566778899aabbccddeefe/",
                                   "/00112233445566778899aabbccddeeff", "/00112233445566778899aabbccddeeff0/"}) {
        EXPECT_EQ(access_.refusal(reading(path)), "not with this address") << path;
    }
}

TEST_F(PanelAccessTest, NameOfAnotherHostIsRefused) {
    for (char const* const host :
         {"", "127.0.0.1", "127.0.0.1:80", "evil.example:8123", "127.0.0.1:8123.evil.example"}) {
        Asked asked = command();
        asked.host = host;
        EXPECT_EQ(access_.refusal(asked), "not for this host") << host;
    }
}

TEST_F(PanelAccessTest, PageOfAnotherOriginIsRefused) {
    for (char const* const origin : {"", "null", "http://evil.example", "http://127.0.0.1", "http://127.0.0.1:9000",
                                     "https://127.0.0.1:8123", "http://localhost:8123"}) {
        Asked asked = command();
        asked.origin = origin;
        EXPECT_EQ(access_.refusal(asked), "not from this page") << origin;
    }
    Asked read = reading("/00112233445566778899aabbccddeeff/events");
    read.origin = "http://evil.example";
    EXPECT_EQ(access_.refusal(read), "not from this page");
}

TEST_F(PanelAccessTest, RequestThatABrowserCallsForeignIsRefused) {
    for (char const* const site : {"cross-site", "same-site", "none"}) {
        Asked asked = command();
        asked.fetch_site = site;
        EXPECT_EQ(access_.refusal(asked), "not from this page") << site;
    }
}

TEST(PanelTokenTest, EachHas128BitsOfItsOwn) {
    std::string const one = sim::make_token();
    EXPECT_EQ(one.size(), 32U);
    EXPECT_EQ(one.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(one, sim::make_token());
}

TEST(PanelTokenTest, SecretsAreTheSameInAllOfTheirBytes) {
    EXPECT_TRUE(sim::are_same_secret("abc", "abc"));
    EXPECT_FALSE(sim::are_same_secret("abc", "abd"));
    EXPECT_FALSE(sim::are_same_secret("abc", "xbc"));
    EXPECT_FALSE(sim::are_same_secret("abc", "ab"));
}

}  // namespace
