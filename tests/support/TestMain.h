#pragma once

#include <QObject>

#include <functional>
#include <memory>

namespace testing {

/// Makes a test object known to the program's main under its class name.
struct Registration {
    Registration(const char *name, std::function<std::unique_ptr<QObject>()> make);
};

} // namespace testing

#define REGISTER_TEST(Class)                                                                                           \
    static const testing::Registration registration##Class(#Class, [] { return std::make_unique<Class>(); });
