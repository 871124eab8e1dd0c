// A test of an application needs nothing but the library.
#include <kavio/testing/device.h>

#include <iostream>

int main() {
    kavio::test::Device device;
    std::cout << (device.logIn() ? "logged in" : "not logged in") << std::endl;
}
