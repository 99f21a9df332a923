// SPDX-License-Identifier: MIT
//
// A host that is linked with the library.

extern "C" int useLibrary();

int main()
{
    return useLibrary();
}
