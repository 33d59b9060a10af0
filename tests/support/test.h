#pragma once

#include "support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

// What every test begins with.

namespace tessaril::testing {}

namespace tessaril {

using namespace testing;
using ::testing::AllOf, ::testing::Contains, ::testing::Each, ::testing::ElementsAre,
    ::testing::EndsWith, ::testing::HasSubstr, ::testing::IsEmpty, ::testing::Not, ::testing::Pair,
    ::testing::Return, ::testing::SizeIs, ::testing::StartsWith, ::testing::UnorderedElementsAre;

} // namespace tessaril
