// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "settings/validation.h"

#include <gtest/gtest.h>

namespace {

TEST(Validation, NamesTheInvalidFieldsInOrder) {
  EXPECT_EQ("Invalid IP Address, Subnet Mask",
            describeInvalidFields({{"IP Address", false}, {"Subnet Mask", false}, {"P", true}}));
  EXPECT_EQ("Invalid Gateway", describeInvalidFields({{"IP Address", true}, {"Gateway", false}}));
  EXPECT_EQ("Invalid A, B, C, D",
            describeInvalidFields({{"A", false}, {"B", false}, {"C", false}, {"D", false}}));
}

TEST(Validation, SaysSoWhenNothingIsInvalid) {
  EXPECT_EQ("Invalid All fields are valid", describeInvalidFields({{"IP Address", true}}));
  EXPECT_EQ("Invalid All fields are valid", describeInvalidFields({}));
}

}  // namespace
