// A library in a folder that no loader searches.

extern "C" __attribute__((visibility("default"))) int TestDependencyNumber()
{
    return 7;
}
