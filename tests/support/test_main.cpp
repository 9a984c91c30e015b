// Starts every test program: gives it its own /usr/tavrin, then runs the tests.
// SPDX-License-Identifier: MIT
#include "simulated_host/private_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (!GTEST_FLAG_GET(list_tests)) {
        const QString error = enterPrivateUsr();
        if (!error.isEmpty()) {
            std::cerr << "no private /usr/tavrin: " << error.toStdString() << '\n';
            return 2;
        }
        if (!pathMappingNotice().isEmpty())
            std::cerr << pathMappingNotice().toStdString() << '\n';
    }
    return RUN_ALL_TESTS();
}
