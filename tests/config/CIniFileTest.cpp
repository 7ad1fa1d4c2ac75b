#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "config/CIniFile.h"

namespace TesselFX {
namespace {

using test::LogCapture;

/// Sections and keys in iteration order as "[section]" and "key=value" lines.
std::vector<std::string> Tree(const CIniFile& ini) {
    std::vector<std::string> lines;
    for (const auto& section : ini.GetSections()) {
        lines.push_back("[" + section.second->GetName() + "]");
        for (const auto& key : section.second->GetKeys()) {
            lines.push_back(key.second->GetName() + "=" + key.second->GetValue());
        }
    }
    return lines;
}

std::string TempPath(const char* name) {
    return ::testing::TempDir() + name + std::to_string(getpid());
}

TEST(CIniFile, LineClassificationQuirks) {
    CIniFile ini;
    ini.LoadMemory(
        "dropped=before any section\n"
        "[Main]\n"
        "Gain=3 ; loud\n"
        "  ; note=not a key\n"
        "# hash=comment\n"
        "\tIndented = value with = inside  \r\n"
        "=starts with equals\n"
        "no equals sign here\n"
        "Path=a#b;c\n"
        "[Name]  \n"
        "k=v\n"
        "   [ Spaced ]\r\n"
        "last=no line feed");
    const std::vector<std::string> expected = {
        "[Main]",     "Gain=3 ; loud",     "Indented= value with = inside  ",
        "Path=a#b;c", "[Name]]",           "k=v",
        "[Spaced]",   "last=no line feed",
    };
    EXPECT_EQ(Tree(ini), expected);
    EXPECT_NE(ini.GetSection("Name]"), nullptr);
    EXPECT_EQ(ini.GetSection("Name"), nullptr);
}

TEST(CIniFile, HeaderShapes) {
    CIniFile ini;
    ini.LoadMemory("[]\na=1\n[\nb=2\n[x\nc=3\nd]\n[[y]]\ne=5\n]\nf=6\n");
    // "[" and "[x" are not headers, so their keys stay in the section before them.
    const std::vector<std::string> expected = {"[]", "a=1", "b=2", "c=3", "[[y]]", "e=5", "f=6"};
    EXPECT_EQ(Tree(ini), expected);
}

TEST(CIniFile, CaseInsensitiveSetsAndMerge) {
    CIniFile ini;
    ini.LoadMemory("[b]\nZeta=1\nalpha=2\n[a]\nGAIN=1\n[A]\ngain=2\nBeta=3\n");
    const std::vector<std::string> expected = {"[a]", "Beta=3",  "GAIN=2",
                                               "[b]", "alpha=2", "Zeta=1"};
    EXPECT_EQ(Tree(ini), expected);
    EXPECT_EQ(ini.GetValue(" A\t", "gAiN "), "2");

    ini.LoadMemory("[B]\nZETA=9\nnew=4\n[c]\nx=y\n", true);
    const std::vector<std::string> merged = {"[a]",   "Beta=3", "GAIN=2", "[b]", "alpha=2",
                                             "new=4", "Zeta=9", "[c]",    "x=y"};
    EXPECT_EQ(Tree(ini), merged);

    ini.LoadMemory("[only]\nk=v\n");
    const std::vector<std::string> replaced = {"[only]", "k=v"};
    EXPECT_EQ(Tree(ini), replaced);
}

TEST(CIniFile, TextEndsAtTheFirstNul) {
    CIniFile ini;
    const std::string text("[s]\na=1\nb=2\0c=3\n[t]\nd=4\n", 25);
    ini.LoadMemory(text);
    const std::vector<std::string> expected = {"[s]", "a=1", "b=2"};
    EXPECT_EQ(Tree(ini), expected);

    const std::string path = TempPath("nul.ini");
    {
        std::ofstream out(path, std::ios::binary);
        out << text;
    }
    CIniFile fromFile;
    EXPECT_TRUE(fromFile.LoadFile(path));
    EXPECT_EQ(Tree(fromFile), expected);
    std::remove(path.c_str());
}

TEST(CIniFile, LoadFileFailureLeavesTreeAndSaveWritesSortedText) {
    CIniFile ini;
    ini.SetValue("Zed", "k", "v");
    ini.SetValue("alpha", "b", "2");
    ini.SetValue(" alpha ", " A ", "1 ; kept");
    EXPECT_FALSE(ini.LoadFile("/nonexistent/dir/file.ini"));
    EXPECT_EQ(ini.GetValue("zed", "K"), "v");

    const std::string path = TempPath("save.ini");
    ASSERT_TRUE(ini.Save(path));
    std::ifstream in(path, std::ios::binary);
    std::stringstream written;
    written << in.rdbuf();
    EXPECT_EQ(written.str(), "[alpha]\nA=1 ; kept\nb=2\n[Zed]\nk=v\n");

    CIniFile reread;
    ASSERT_TRUE(reread.LoadFile(path));
    EXPECT_EQ(Tree(reread), Tree(ini));
    std::remove(path.c_str());

    LogCapture capture;
    EXPECT_FALSE(ini.Save("/nonexistent/dir/out.ini"));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"CIniFile::Save failed on file /nonexistent/dir/out.ini"});
    EXPECT_EQ(capture.PositionLines(), 1u);

    // A directory opens but reads as nothing: the tree is emptied, nothing breaks.
    EXPECT_TRUE(reread.LoadFile(::testing::TempDir()));
    EXPECT_TRUE(reread.GetSections().empty());
}

TEST(CIniFile, TypedReads) {
    CIniFile ini;
    ini.LoadMemory(
        "[n]\nint= -42xyz\nhex=1aF\nblank=   \nword=abc\nbig=4294967297\n"
        "on=yes\noff=no\nempty=\nodd=maybe\n");
    LogCapture capture;
    int32_t value = 5;
    EXPECT_TRUE(ini.LoadIntVal("n", "int", value));
    EXPECT_EQ(value, -42);
    EXPECT_TRUE(capture.Has(1, "CIniFile::LoadIntVal int ms -42"));
    EXPECT_TRUE(ini.LoadHexVal("n", "hex", value));
    EXPECT_EQ(value, 0x1AF);
    EXPECT_TRUE(capture.Has(1, "CIniFile::LoadHexVal hex ms 431"));
    EXPECT_TRUE(ini.LoadIntVal("n", "big", value));
    EXPECT_EQ(value, 1);  // cut to 32 bits

    value = 5;
    EXPECT_FALSE(ini.LoadIntVal("n", "missing", value));
    EXPECT_FALSE(ini.LoadIntVal("n", "empty", value));
    EXPECT_TRUE(capture.ErrorTexts().empty());
    EXPECT_FALSE(ini.LoadIntVal("n", "blank", value));
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"sscanf failed"});
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(ini.LoadIntVal("n", "word", value));  // no digits: undefined, here unchanged

    bool flag = false;
    EXPECT_TRUE(ini.LoadBoolVal("n", "on", "yes", "no", false, flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(ini.LoadBoolVal("n", "off", "yes", "no", true, flag));
    EXPECT_FALSE(flag);
    EXPECT_TRUE(ini.LoadBoolVal("n", "empty", "yes", "no", true, flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(ini.LoadBoolVal("n", "missing", "yes", "no", false, flag));
    EXPECT_FALSE(flag);
    capture.Clear();
    EXPECT_FALSE(ini.LoadBoolVal("n", "odd", "yes", "no", true, flag));
    EXPECT_FALSE(ini.LoadBoolVal("n", "on", "YES", "no", true, flag));
    const std::vector<std::string> expected = {"The value: maybe is neither yes nor no",
                                               "The value: yes is neither YES nor no"};
    EXPECT_EQ(capture.ErrorTexts(), expected);
}

TEST(CIniFile, RenamesAndRemovals) {
    CIniFile ini;
    ini.LoadMemory("[one]\nk1=a\nk2=b\n[two]\nx=1\n");
    EXPECT_FALSE(ini.RenameSection("one", "TWO"));
    EXPECT_FALSE(ini.RenameSection("three", "four"));
    EXPECT_TRUE(ini.RenameSection("ONE", "  zero "));
    EXPECT_FALSE(ini.RenameKey("zero", "k1", "K2"));
    EXPECT_TRUE(ini.RenameKey("zero", "k1", "a0"));
    const std::vector<std::string> renamed = {"[two]", "x=1", "[zero]", "a0=a", "k2=b"};
    EXPECT_EQ(Tree(ini), renamed);

    CIniFile::CSection* zero = ini.GetSection("ZERO");
    zero->RemoveKey("A0");
    zero->RemoveKey(zero->GetKey("k2"));
    EXPECT_TRUE(zero->GetKeys().empty());
    ini.RemoveSection(zero);
    ini.RemoveSection("TWO");
    EXPECT_TRUE(ini.GetSections().empty());
}

TEST(CIniFile, DumpOnlyBelowLevelTwo) {
    CIniFile ini;
    {
        LogCapture capture(0);
        ini.LoadMemory("[s]\nk=v\n[t]\n");
        const std::vector<std::string> expected = {"Dump", "[s]", "k=v", "[t]"};
        EXPECT_EQ(capture.Texts(1), expected);
    }
    LogCapture quiet(2);
    ini.Dump();
    EXPECT_TRUE(quiet.Texts().empty());
}

}  // namespace
}  // namespace TesselFX
