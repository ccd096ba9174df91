#include "core/white_space.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cwchar>

namespace {

TEST(IsWideSpace, ClassesTheWholeBasicPlane) {
    constexpr wchar_t kSpaces[] =
        L"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A"
        L"\u2028\u2029\u202F\u205F\u3000";
    for (uint32_t code = 1; code <= 0xFFFF; ++code) {
        const auto character = static_cast<wchar_t>(code);
        EXPECT_EQ(IsWideSpace(character), wcschr(kSpaces, character) != nullptr) << "U+" << std::hex << code;
    }
    EXPECT_FALSE(IsWideSpace(L'\0'));
}

}  // namespace
