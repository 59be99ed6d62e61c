// The main of every test program. The locale is the environment's, as it is in a host, and
// QUOR_TEST_DIRECTORY moves the working directory, so that a run can prove that neither decides a result.

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
#if defined(__MINGW32__)
    // Where numbers look otherwise than in "C", its C++ library changes that while it prints one, for all
    // threads.
    std::setlocale(LC_NUMERIC, "C");
#endif
    if (const char* directory = std::getenv("QUOR_TEST_DIRECTORY")) std::filesystem::current_path(directory);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
