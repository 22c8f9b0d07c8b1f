// The main function of test programs whose tests make nodes.
#include "host/services/services.h"

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    velm::host::offerNodeServices();
    return RUN_ALL_TESTS();
}
