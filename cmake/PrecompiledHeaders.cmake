# Two precompiled headers, one for the boxes and one for the tests, take a good half of the time
# that an unoptimised build spends. The preset `clang` does without them, so that lint still sees
# every file with nothing but its own includes.
add_library(salvor_precompiled OBJECT ${CMAKE_SOURCE_DIR}/cmake/precompiled.cpp)
target_link_libraries(salvor_precompiled PRIVATE fmt::fmt Threads::Threads salvor_options)
target_precompile_headers(salvor_precompiled PRIVATE
    <algorithm> <array> <atomic> <chrono> <cstdint> <filesystem> <functional> <map> <memory>
    <mutex> <optional> <span> <sstream> <stop_token> <string> <string_view> <system_error> <thread>
    <tuple> <unordered_map> <unordered_set> <utility> <variant> <vector> <fmt/format.h>)

if(SALVOR_TESTS)
    find_package(GTest REQUIRED)
    add_library(salvor_precompiled_tests OBJECT ${CMAKE_SOURCE_DIR}/cmake/precompiled.cpp)
    target_link_libraries(salvor_precompiled_tests PRIVATE fmt::fmt GTest::gtest GTest::gmock
        salvor_options)
    target_precompile_headers(salvor_precompiled_tests PRIVATE
        <algorithm> <filesystem> <functional> <map> <memory> <optional> <set> <string> <thread>
        <unordered_map> <variant> <vector> <fmt/format.h> <gmock/gmock.h> <gtest/gtest.h>)
endif()
