// The INI reader, each case through a real file.
#include "frontend/ini.h"

#include "support/temp_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstring>
#include <string>

using std::string_literals::operator""s;

static std::string stringOf(const std::string& fileName, const char* section, const char* key) {
    std::array<char, 600> buffer{};
    const i32 length = iniGetString(section, key, "(default)", buffer.data(), static_cast<i32>(buffer.size()),
                                    fileName.c_str());
    EXPECT_EQ(length, static_cast<i32>(std::strlen(buffer.data())));
    return buffer.data();
}

// ---- finding --------------------------------------------------------------------------------------------------

struct FindCase {
    const char* name;
    std::string file;
    const char* section;
    const char* key;
    const char* value;
};

static const FindCase findCases[] = {
    {"a key of its section", "[S]\nK=v\n", "S", "K", "v"},
    {"the last line needs no newline", "[S]\nK=v", "S", "K", "v"},
    {"lines may end in CR LF", "[S]\r\nK=v\r\n", "S", "K", "v"},
    {"an empty file", "", "S", "K", "(default)"},
    {"section and key ignore case", "[sEcT]\nkEy=v\n", "SeCt", "KeY", "v"},
    {"blanks before a section", " \t [S]\nK=v\n", "S", "K", "v"},
    {"blanks inside the brackets count", "[ S ]\nK=v\n", "S", "K", "(default)"},
    {"blanks inside the brackets match blanks asked for", "[ S ]\nK=v\n", " S ", "K", "v"},
    {"text behind the brackets does not count", "[S] ; words\nK=v\n", "S", "K", "v"},
    {"a bracket that is not closed is no section", "[S\nK=v\n", "S", "K", "(default)"},
    {"the first closing bracket ends the name", "[S]]\nK=v\n", "S", "K", "v"},
    {"a longer section name does not match", "[SX]\nK=v\n", "S", "K", "(default)"},
    {"a shorter section name does not match", "[S]\nK=v\n", "SX", "K", "(default)"},
    {"a bracket later in a line opens nothing", "x [S]\nK=v\n", "S", "K", "(default)"},
    {"a commented section opens nothing", ";[S]\nK=v\n", "S", "K", "(default)"},
    {"another section's key", "[T]\nK=t\n[S]\nJ=s\n", "S", "K", "(default)"},
    {"the next section ends the search", "[S]\nJ=s\n[T]\nK=t\n", "S", "K", "(default)"},
    {"any line that begins with a bracket ends the search", "[S]\n  [x\nK=v\n", "S", "K", "(default)"},
    {"a section's second part is never read", "[S]\nJ=s\n[T]\n[S]\nK=v\n", "S", "K", "(default)"},
    {"sections before the right one are passed over", "K=0\n[T]\nK=t\n[S]\nK=s\n", "S", "K", "s"},
    {"without a section the search starts at the top", "K=v\n[S]\nK=s\n", "", "K", "v"},
    {"without a section the first section ends the search", "[S]\nK=s\n", "", "K", "(default)"},
    {"no section is as good as an empty one", "K=v\n", nullptr, "K", "v"},
    {"the first of equal keys wins", "[S]\nK=1\nK=2\n", "S", "K", "1"},
    {"an empty first value wins too", "[S]\nK=\nK=2\n", "S", "K", ""},
    {"a longer key does not match", "[S]\nKX=v\n", "S", "K", "(default)"},
    {"a shorter key does not match", "[S]\nK=v\n", "S", "KX", "(default)"},
    {"blanks around key and value go", "[S]\n \tK \t= \tv \t\n", "S", "K", "v"},
    {"blanks inside the key stay", "[S]\nA B=v\n", "S", "A B", "v"},
    {"a colon is a delimiter", "[S]\nK: v\n", "S", "K", "v"},
    {"an equals sign comes before a colon to its left", "[S]\nK:x=v\n", "S", "K:x", "v"},
    {"a colon behind the equals sign is text", "[S]\nK=c:v\n", "S", "K", "c:v"},
    {"the first equals sign delimits", "[S]\nK=a=b\n", "S", "K", "a=b"},
    {"a line without a delimiter is skipped", "[S]\nK\nK=v\n", "S", "K", "v"},
    {"a comment line is skipped", "[S]\n;K=1\n#K=2\n  ;K=3\nK=v\n", "S", "K", "v"},
    {"a comment sign that the key begins with hides it", "[S]\n;K=1\n", "S", ";K", "(default)"},
    {"empty lines are skipped", "[S]\n\n   \n\t\nK=v\n", "S", "K", "v"},
    {"a line of delimiters alone", "[S]\n=\n:\n==\nK=v\n", "S", "K", "v"},
    {"an empty key in the file is not this key", "[S]\n=5\n   =6\nK=v\n", "S", "K", "v"},
    {"an empty key can be asked for", "[S]\n=5\n", "S", "", "5"},
    {"bytes from 128 up are blanks before and behind", "[S]\n\xC3\xA0K\xA0=\xA0v\xFF\n", "S", "K", "v"},
    {"bytes from 128 up are text in the middle", "[S]\nK=a\xC3\xA9z\n", "S", "K", "a\xC3\xA9z"},
    {"the case of bytes from 128 up counts", "[S]\nx\xE9x=v\n", "S", "X\xC9X", "(default)"},
    {"a byte order mark before the section is blank", "\xEF\xBB\xBF[S]\nK=v\n", "S", "K", "v"},
    {"the byte 127 is no blank", "[S]\n\x7FK=v\n", "S", "K", "(default)"},
    {"a NUL ends its line and no more", "[S]\nK=a\0b\nJ=c\n"s, "S", "J", "c"},
    {"a NUL ends the value", "[S]\nK=a\0b\n"s, "S", "K", "a"},
};

TEST(IniReader, FindsAKeyByTheseRules) {
    const TempDirectory directory;
    for (const FindCase& c : findCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(stringOf(directory.write("case.ini", c.file), c.section, c.key), c.value);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------

struct ValueCase {
    const char* name;
    std::string written;  // behind "K="
    const char* value;
};

static const ValueCase valueCases[] = {
    {"plain text", "my book.bin", "my book.bin"},
    {"an empty value", "", ""},
    {"a value of blanks", "   ", ""},
    {"a comment behind the value", "a ; b", "a"},
    {"the other comment sign", "a#b", "a"},
    {"nothing but a comment", ";a", ""},
    {"nothing but a comment behind blanks", "   # a", ""},
    {"quotes go", "\"my book.bin\"", "my book.bin"},
    {"blanks inside quotes stay", "\"  a  \"", "  a  "},
    {"comment signs inside quotes are text", "\"a#b;c\"", "a#b;c"},
    {"a comment behind quotes", "\"a;b\" ; c", "a;b"},
    {"quotes in the middle stay but hide comment signs", "a \"b;c\" d", "a \"b;c\" d"},
    {"a quote at the start alone stays", "\"a", "\"a"},
    {"a quote at the end alone stays", "a\"", "a\""},
    {"a single quote mark stays", "\"", "\""},
    {"two quote marks are an empty text", "\"\"", ""},
    {"three quote marks keep the middle one", "\"\"\"", "\""},
    {"a quote that is never closed hides comment signs to the end", "\"a;b", "\"a;b"},
    {"a doubled quote mark inside quotes becomes one", "\"a\"\"b\"", "a\"b"},
    {"a doubled quote mark does not end the quotes", "\"a\"\"b;c\"", "a\"b;c"},
    {"a backslash and a quote mark become a quote mark", "\"a\\\"b\"", "a\"b"},
    {"a backslash and a quote mark do not end the quotes", "\"a\\\";b\"", "a\";b"},
    {"a doubled quote mark outside quotes stays", "a\"\"b", "a\"\"b"},
    {"a doubled quote mark outside quotes hides nothing", "a\"\"b;c", "a\"\"b"},
    {"a backslash and a quote mark outside quotes stay", "a\\\"b", "a\\\"b"},
    {"a path with backslashes", "C:\\chess\\tb", "C:\\chess\\tb"},
    {"a path with backslashes in quotes", "\"C:\\chess\\tb\"", "C:\\chess\\tb"},
    {"a quoted path that ends in a backslash keeps it", "\"C:\\tb\\\"", "C:\\tb\\"},
    {"doubled backslashes stay", "\"a\\\\b\"", "a\\\\b"},
};

TEST(IniReader, CleansAValueByTheseRules) {
    const TempDirectory directory;
    for (const ValueCase& c : valueCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(stringOf(directory.write("case.ini", "[S]\nK=" + c.written + "\n"), "S", "K"), c.value);
    }
}

// ---- lines ----------------------------------------------------------------------------------------------------

TEST(IniReader, ReadsALineOf511BytesWhole) {
    const TempDirectory directory;
    const std::string value(508, 'v');
    const std::string file = directory.write("long.ini", "[S]\nK=" + value + "\n");
    EXPECT_EQ(stringOf(file, "S", "K"), value);
}

TEST(IniReader, SeesTheRestOfALongLineAsTheNextLine) {
    const TempDirectory directory;
    const std::string padding(511, 'x');
    EXPECT_EQ(stringOf(directory.write("key.ini", "[S]\n" + padding + "K=v\n"), "S", "K"), "v");
    EXPECT_EQ(stringOf(directory.write("section.ini", padding + "[S]\nK=v\n"), "S", "K"), "v");
    EXPECT_EQ(stringOf(directory.write("blanks.ini", "[S]\n" + std::string(511, ' ') + "K=v\n"), "S", "K"),
              "v");
    EXPECT_EQ(stringOf(directory.write("cut.ini", "[S]\nK=" + std::string(600, 'v') + "\n"), "S", "K"),
              std::string(509, 'v'));
}

TEST(IniReader, PassesOverAHugeLine) {
    const TempDirectory directory;
    for (const char filler : {'x', ' ', '=', '[', '"', '\0'}) {
        SCOPED_TRACE(static_cast<i32>(filler));
        const std::string line(8 << 20, filler);
        const std::string file = directory.write("huge.ini", line);
        EXPECT_EQ(stringOf(file, "S", "K"), "(default)");
        EXPECT_EQ(stringOf(file, "", "K"), "(default)");
    }
    const std::string behind = directory.write("behind.ini", std::string(8 << 20, 'x') + "\n[S]\nK=v\n");
    EXPECT_EQ(stringOf(behind, "S", "K"), "v");
}

// ---- buffers --------------------------------------------------------------------------------------------------

TEST(IniReader, CutsTextToTheBuffer) {
    const TempDirectory directory;
    const std::string file = directory.write("cut.ini", "[S]\nK=abcdef\nQ=\"a\"\"bcdef\"\n");
    const auto cutTo = [&](const char* key, i32 size) {
        std::array<char, 16> buffer;
        buffer.fill('*');
        const i32 length = iniGetString("S", key, "default", buffer.data(), size, file.c_str());
        EXPECT_EQ(buffer[static_cast<u32>(size)], '*') << "wrote beyond the buffer";
        EXPECT_EQ(length, static_cast<i32>(std::strlen(buffer.data())));
        return std::string(buffer.data());
    };
    EXPECT_EQ(cutTo("K", 1), "");
    EXPECT_EQ(cutTo("K", 2), "a");
    EXPECT_EQ(cutTo("K", 6), "abcde");
    EXPECT_EQ(cutTo("K", 7), "abcdef");
    EXPECT_EQ(cutTo("Q", 3), "a\"");
    EXPECT_EQ(cutTo("Q", 4), "a\"b");
    EXPECT_EQ(cutTo("missing", 4), "def");
}

TEST(IniReader, DoesNothingWithoutBufferOrKey) {
    const TempDirectory directory;
    const std::string file = directory.write("case.ini", "[S]\nK=v\n");
    std::array<char, 8> buffer;
    buffer.fill('*');
    EXPECT_EQ(iniGetString("S", "K", "d", buffer.data(), 0, file.c_str()), 0);
    EXPECT_EQ(iniGetString("S", "K", "d", buffer.data(), -5, file.c_str()), 0);
    EXPECT_EQ(iniGetString("S", nullptr, "d", buffer.data(), 8, file.c_str()), 0);
    EXPECT_EQ(iniGetString("S", "K", "d", nullptr, 8, file.c_str()), 0);
    EXPECT_EQ(buffer[0], '*');
}

TEST(IniReader, TakesAMissingDefaultOrFileNameAsEmpty) {
    std::array<char, 8> buffer;
    buffer.fill('*');
    EXPECT_EQ(iniGetString("S", "K", nullptr, buffer.data(), 8, nullptr), 0);
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(iniGetString("S", "K", "abc", buffer.data(), 8, nullptr), 3);
    EXPECT_STREQ(buffer.data(), "abc");
}

TEST(IniReader, LeavesTheBufferAloneWithoutSuchAKey) {
    const TempDirectory directory;
    std::FILE* file = std::fopen(directory.write("case.ini", "[S]\nK=v\n").c_str(), "rb");
    ASSERT_NE(file, nullptr);
    std::array<char, 8> buffer = {"before"};
    EXPECT_EQ(iniFindValue(file, "S", "J", buffer.data(), 8), 0);
    EXPECT_STREQ(buffer.data(), "before");
    std::rewind(file);
    EXPECT_EQ(iniFindValue(file, "S", "K", buffer.data(), 8), 1);
    EXPECT_STREQ(buffer.data(), "v");
    std::fclose(file);
}

// ---- numbers --------------------------------------------------------------------------------------------------

struct IntCase {
    const char* name;
    std::string written;
    i32 value;
};

constexpr i32 intDefault = 77;

static const IntCase intCases[] = {
    {"decimal", "128", 128},
    {"with a comment", "128 ; megabytes", 128},
    {"negative", "-5", -5},
    {"with a plus sign", "+5", 5},
    {"quoted", "\"64\"", 64},
    {"empty", "", intDefault},
    {"a comment alone", "; 5", intDefault},
    {"up to the first other byte", "12abc", 12},
    {"a fraction is cut", "3.9", 3},
    {"no number at all is 0, not the default", "abc", 0},
    {"leading zeros are not octal", "010", 10},
    {"hexadecimal", "0x40", 64},
    {"hexadecimal in capitals", "0X4F", 79},
    {"any first character before the x makes it hexadecimal", "1x5", 1},
    {"a hexadecimal digit before the x", "ax5", 10},
    {"a sign before the x", "-x5", 0},
    {"a sign before 0x stays decimal", "-0x10", 0},
    {"a prefix without digits", "0x", 0},
    {"one character is never hexadecimal", "x", 0},
    {"the largest", "2147483647", 2147483647},
    {"above the largest", "2147483648", 2147483647},
    {"far above the largest", "99999999999999999999999999", 2147483647},
    {"hexadecimal above the largest", "0xFFFFFFFF", 2147483647},
    {"the smallest", "-2147483648", -2147483647 - 1},
    {"below the smallest", "-2147483649", -2147483647 - 1},
    {"far below the smallest", "-99999999999999999999999999", -2147483647 - 1},
    {"63 characters of the value count", std::string(62, '0') + "12", 1},
};

TEST(IniReader, ReadsANumberByTheseRules) {
    const TempDirectory directory;
    for (const IntCase& c : intCases) {
        SCOPED_TRACE(c.name);
        const std::string file = directory.write("case.ini", "[S]\nK=" + c.written + "\n");
        EXPECT_EQ(iniGetInt("S", "K", intDefault, file.c_str()), c.value);
    }
    EXPECT_EQ(iniGetInt("S", "K", intDefault, directory.nameOf("missing.ini").c_str()), intDefault);
    EXPECT_EQ(iniGetInt("S", "J", intDefault, directory.write("case.ini", "[S]\nK=1\n").c_str()), intDefault);
}

// ---- truth ----------------------------------------------------------------------------------------------------

TEST(IniReader, ReadsTruthFromTheFirstCharacter) {
    const TempDirectory directory;
    const auto read = [&](const std::string& written, i32 defaultValue) {
        const std::string file = directory.write("case.ini", "[S]\nK=" + written + "\n");
        return iniGetBool("S", "K", defaultValue, file.c_str());
    };
    for (const char* yes :
         {"yes", "Yes", "y", "true", "TRUE", "1", "1 ; comment", "10", "\"yes\"", "yoghurt"}) {
        EXPECT_EQ(read(yes, 0), 1) << yes;
    }
    for (const char* no : {"no", "No", "n", "false", "F", "0", "0x1", "\"0\"", "nonsense"}) {
        EXPECT_EQ(read(no, 1), 0) << no;
    }
    for (const char* neither : {"off", "on", "2", "", ";1", "-1", "\xF9"}) {
        EXPECT_EQ(read(neither, 1), 1) << neither;
        EXPECT_EQ(read(neither, 0), 0) << neither;
    }
    EXPECT_EQ(iniGetBool("S", "K", 1, directory.nameOf("missing.ini").c_str()), 1);
    EXPECT_EQ(iniGetBool("S", "K", 0, directory.nameOf("missing.ini").c_str()), 0);
}

// ---- what is no file ------------------------------------------------------------------------------------------

TEST(IniReader, TakesWhatIsNoRegularFileAsMissing) {
    const TempDirectory directory;
    const std::string pipe = directory.nameOf("pipe.ini");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(stringOf(pipe, "S", "K"), "(default)");
    EXPECT_EQ(stringOf(directory.path.string(), "S", "K"), "(default)");
    EXPECT_EQ(stringOf("/dev/zero", "S", "K"), "(default)");
    EXPECT_EQ(stringOf("", "S", "K"), "(default)");
    EXPECT_EQ(stringOf(std::string(100000, 'a'), "S", "K"), "(default)");
}
