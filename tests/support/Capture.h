#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

/// The message of the `Exception` that `action` throws, or "no exception". Anything else it throws leaves the call:
/// a test that expects a std::runtime_error fails on a std::invalid_argument.
template <class Exception = std::runtime_error, class Action>
std::string ErrorOf(Action&& action) {
    try {
        action();
    } catch (Exception const& error) {
        return error.what();
    }
    return "no exception";
}

/// What `action` printed on standard error.
template <class Action>
std::string StderrOf(Action&& action) {
    testing::internal::CaptureStderr();
    try {
        action();
    } catch (...) {
        testing::internal::GetCapturedStderr();
        throw;
    }
    return testing::internal::GetCapturedStderr();
}
