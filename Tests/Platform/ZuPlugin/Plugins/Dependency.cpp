// Lies where no loader looks for it.

extern "C" __attribute__((visibility("default"))) int TestDependencyNumber()
{
    return 7;
}
