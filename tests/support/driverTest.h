/// Tests that look at the driver's own state beside what the host sees.
#ifndef TESTS_DRIVER_TEST_H
#define TESTS_DRIVER_TEST_H

#include "model/protocol.h"
#include "serviceForProtocol/cache/unitIndex.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "support/host.h"

#include <gtest/gtest.h>

/// Starts every test with a driver that is configured, empty, and reports to `reports()`.
class DriverTest : public ::testing::Test, protected Host {
protected:
    DriverTest() : Host(linkedCalls())
    {
        driver.lastConditionRead = VARIABLE();
        freeInCallback = {&driver.mutex, &driver.dataAreaMutex, &hostMutex};
    }

    /// The cache entry of a unit, created if missing.
    static _DATA_ &unit(const std::string &keyName, int address, int station = 1)
    {
        return driver.dataAreas[getIndexOfDataArea(station, qt(keyName), address, driver.dataAreas)];
    }
};

#endif
