// The one file that is compiled with the folder's name, so that a compiler cache can share all others between checkouts.
#include "support/test_data.h"

std::string testDataPath(const std::string& name) {
    return TEST_DATA_DIR "/" + name;
}
