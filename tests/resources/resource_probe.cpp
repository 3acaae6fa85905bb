// A library needs one symbol to be linked; everything of interest in this one is a resource.
extern "C" __declspec(dllexport) int resourceProbe() {
    return 0;
}
