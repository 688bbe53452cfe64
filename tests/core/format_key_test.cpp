#include "core/format_key.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(FormatKey, FitsOrIsCut) {
    char key[Tessarin::kFormatKeyRoom];
    EXPECT_TRUE(Tessarin::FormatKey(key, "%s:%d:%u", "items", -3, 4000000000U));
    EXPECT_STREQ(key, "items:-3:4000000000");
    std::string longest(Tessarin::kFormatKeyRoom - 1, 'x');
    EXPECT_TRUE(Tessarin::FormatKey(key, "%s", longest.c_str()));
    EXPECT_EQ(key, longest);
    EXPECT_FALSE(Tessarin::FormatKey(key, "%sy", longest.c_str()));
    EXPECT_EQ(key, longest);
}

} // namespace
