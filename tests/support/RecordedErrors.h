#pragma once

#include "driver/errors/ErrorSink.h"
#include "interfaces/ErrorCodes.h"

#include <gtest/gtest.h>

#include <string>

namespace velktest {

/** The last error of a part of the driver that is tested without the driver. */
class RecordedErrors {
public:
    int code = kErrorNone;
    std::string text;
    _VELK::ErrorSink sink{this, &Record};

    void Expect(int expectedCode, std::string const& expectedText) const {
        EXPECT_EQ(code, expectedCode);
        EXPECT_EQ(text, expectedText);
    }

private:
    static void Record(void* self, int newCode, char const* newText) {
        static_cast<RecordedErrors*>(self)->code = newCode;
        static_cast<RecordedErrors*>(self)->text = newText;
    }
};

} // namespace velktest
