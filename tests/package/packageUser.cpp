#include <tanek_vs/driver.h>

#include <cstdio>

int main()
{
    std::puts(intf_getVersion().toLatin1().constData());
    return intf_getVersion() == QString::fromLatin1("2.0.0.0") ? 0 : 1;
}
