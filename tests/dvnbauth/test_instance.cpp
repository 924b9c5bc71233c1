#include <gtest/gtest.h>

#include "dvnbauth.h"

// The process-wide object: one instance until destroyed, a fresh one after.
TEST(DvnBTAuthorizationInstance, OneObjectUntilDestroyedThenAFreshOne) {
    DvnBTAuthorization::DestroyInstance();
    DvnBTAuthorization::DestroyInstance();  // nothing to destroy: no effect

    DvnBTAuthorization* first = DvnBTAuthorization::GetInstance();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(DvnBTAuthorization::GetInstance(), first);
    EXPECT_TRUE(first->DbUser().IsNull());
    EXPECT_TRUE(first->DbPassword().IsNull());
    EXPECT_TRUE(first->UserID().IsNull());
    EXPECT_FALSE(first->AuthForTopologyWrite());
    EXPECT_FALSE(first->AuthForProcessModeling());
    EXPECT_FALSE(first->AuthForStaffWrite());

    first->SetDBUser(DvnString("dbuser"), DvnString("secret"));
    EXPECT_EQ(first->DbUser(), DvnString("dbuser"));
    EXPECT_EQ(first->DbPassword(), DvnString("secret"));
    EXPECT_TRUE(first->UserID().IsNull());  // SetDBUser stores both, nothing else

    DvnBTAuthorization::DestroyInstance();
    DvnBTAuthorization* second = DvnBTAuthorization::GetInstance();
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(second->DbUser().IsNull());
    EXPECT_TRUE(second->DbPassword().IsNull());
    DvnBTAuthorization::DestroyInstance();
}
