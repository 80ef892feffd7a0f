// Outputs appear complete or not at all, whatever ends the program and whoever writes beside it.

#include <gtest/gtest.h>
#include <json/json.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>

#include "tests/vdrdump/Dumps.h"
#include "tests/vdrdump/Program.h"
#include "tools/output/Output.h"
#include "tools/output/printablePath.h"

namespace vdrdump::test {
namespace {

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& each : std::filesystem::directory_iterator(folder)) {
        names.push_back(each.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

struct Export {
    const char* name;
    std::vector<std::string> arguments;
};

const Export kExports[] = {
        {"Csv", {"export", "-", "--format", "csv"}},
        {"Ndjson", {"export", "-", "--format", "ndjson"}},
        {"Sqlite", {"export", "-", "--format", "sqlite"}},
};

class Outputs : public testing::TestWithParam<Export> {
protected:
    // The program with `out` as its output, waiting for more of its dump: what is behind a pipe
    // that stays open. Some of it was read, as the output's unfinished file is there.
    pid_t start(const std::string& out) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        std::vector<std::string> arguments = GetParam().arguments;
        arguments.insert(arguments.begin(), VDRDUMP_PROGRAM);
        arguments.insert(arguments.end(), {"-o", out});
        std::vector<char*> pointers;
        for (std::string& each : arguments) {
            pointers.push_back(each.data());
        }
        pointers.push_back(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            dup2(ends[0], STDIN_FILENO);
            close(ends[1]);
            execv(pointers[0], pointers.data());
            _exit(127);
        }
        close(ends[0]);
        mInput = ends[1];
        const std::string dump = binaryOf({frame(1), frame(2)});
        EXPECT_EQ(write(mInput, dump.data(), dump.size()), static_cast<ssize_t>(dump.size()));
        const std::string parent = std::filesystem::path(out).parent_path();
        const size_t before = std::filesystem::exists(out) ? 1 : 0;
        for (int i = 0; i < 30000 && namesIn(parent).size() == before; ++i) {
            usleep(1000);
        }
        EXPECT_EQ(namesIn(parent).size(), before + 1) << "unfinished beside its place";
        return child;
    }

    int waitFor(pid_t child) {
        int status = 0;
        waitpid(child, &status, 0);
        close(mInput);
        return status;
    }

    const TempFolder mFolder;
    int mInput = -1;
};

TEST_P(Outputs, SignalsLeaveWhatWasThere) {
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
        const std::string out = mFolder.path("out");
        const bool hadOne = signal == SIGINT;
        if (hadOne) {
            mFolder.file("out", "kept");
        } else {
            unlink(out.c_str());
        }
        const pid_t child = start(out);
        kill(child, signal);
        const int status = waitFor(child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        EXPECT_EQ(namesIn(mFolder.path("")).size(), hadOne ? 1U : 0U);
        EXPECT_EQ(contentsOf(out), hadOne ? "kept" : "");
    }
}

TEST_P(Outputs, RunsWithOneNameDoNotMeet) {
    const std::string out = mFolder.path("out");
    const pid_t slow = start(out);
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.end(), {"-o", out});
    EXPECT_EQ(run(arguments, binaryOf({frame(7)})).status, 0);
    const std::string quick = contentsOf(out);
    EXPECT_FALSE(quick.empty());
    close(mInput);
    EXPECT_EQ(waitFor(slow), 0);
    EXPECT_EQ(namesIn(mFolder.path("")), std::vector<std::string>{"out"});
    EXPECT_NE(contentsOf(out), quick);
}

INSTANTIATE_TEST_SUITE_P(Format, Outputs, testing::ValuesIn(kExports),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Output, KeepsModesLinksAndWhatIsNoFile) {
    const TempFolder folder;
    const std::string file = folder.file("out", "old");
    const std::string link = folder.path("link");
    chmod(file.c_str(), 0640);
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    {
        Output output(link);
        output.append("new");
        EXPECT_EQ(contentsOf(file), "old");
        EXPECT_TRUE(output.finish());
    }
    EXPECT_EQ(contentsOf(file), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    struct stat status {};
    stat(file.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    Output gone(folder.path("gone"));
    EXPECT_TRUE(Output("/dev/null").finish());
    EXPECT_FALSE(Output("/dev/full").hasFailed());
}

TEST(PrintablePath, EscapesWhatIsNoTextAndNothingElse) {
    const std::pair<std::string, std::string> kPaths[] = {
            {"/a/b c.bin", "/a/b c.bin"},
            {"gr\xc3\xbc\xc3\x9f/\xe2\x82\xac/\xf0\x9f\x93\xb7",
             "gr\xc3\xbc\xc3\x9f/\xe2\x82\xac/\xf0\x9f\x93\xb7"},
            {"\xff\xfe", R"(\xff\xfe)"},
            {"a\nb\x1b[1m\x7f", R"(a\x0ab\x1b[1m\x7f)"},
            {"a\\b", R"(a\x5cb)"},
            {"\xc0\xaf", R"(\xc0\xaf)"},                  // a longer form of "/"
            {"\xed\xa0\x80", R"(\xed\xa0\x80)"},          // half a pair
            {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},  // beyond the last character
            {"\xc2\x9b", R"(\xc2\x9b)"},                  // controls a terminal
            {"\xe2\x82", R"(\xe2\x82)"},
    };
    for (const auto& [path, shown] : kPaths) {
        EXPECT_EQ(printablePath(path), shown);
    }
}

TEST(Program, PathThatIsNoText_IsEscapedInEveryOutput) {
    const TempFolder folder;
    const std::string dump = folder.file("a\xff\n.bin", binaryOf({frame(1)}).substr(0, 4000));
    const std::string shown = folder.path(R"(a\xff\x0a.bin)");
    const std::string out = folder.path("out");
    EXPECT_EQ(run({"info", dump}).out.find(shown + ": binary dump"), 0U);
    EXPECT_EQ(run({"info", dump}).err.find("vdrdump: " + shown + ": offset 0"), 0U);
    EXPECT_NE(run({"export", dump, "--format", "csv"}).out.find("\n" + shown + ",,1,0,1,"),
              std::string::npos);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"export", dump, "--format", "ndjson"},
          {"info", "--json", dump}}) {
        Json::Value value;
        std::istringstream(run(arguments).out) >> value;
        EXPECT_EQ((value.isMember("files") ? value["files"][0]["path"] : value["file"]).asString(),
                  shown);
    }
    run({"export", dump, "--format", "sqlite", "-o", out});
    EXPECT_NE(contentsOf(out).find(shown), std::string::npos);
    EXPECT_EQ(contentsOf(out).find('\xff' + std::string("\n.bin")), std::string::npos);
}

}  // namespace
}  // namespace vdrdump::test
