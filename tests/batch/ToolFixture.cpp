#include "batch/ToolFixture.h"

#include "platform/Files.h"
#include "support/ModelText.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

namespace orrery::test {
namespace {

std::string model() {
    return "<!DOCTYPE database SYSTEM \"file:///nowhere/kestrel.dtd\">\n" +
           ModelText("Field")
               .part("KSEXPRESSION", "Crop", {{"water"}, {"seed"}},
                     {{"biomass", {{"varid", "1"}}}, {"yield", {{"varid", "2"}}}})
               .text();
}

constexpr const char* setup =
    "<Simulation><ModelPath>model.xml</ModelPath><StepsPerDay>1</StepsPerDay>"
    "<StartDay>2001-06-15 12:00:00 +0000</StartDay><RunLength>2</RunLength><ReportStep>1</ReportStep>"
    "<Dimensions>{ 1, 1 }</Dimensions><GCD/><Steppers><PortPath>/Field/Crop/water</PortPath><Start>0</Start>"
    "<Step>1</Step><Stop>2</Stop></Steppers></Simulation>";

int openForChild(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600); // NOLINT(*-vararg)
}

/// What the file holds by now, also while it is being written.
std::string textSoFar(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

const char* const resultTable = "run\twater\tday\tbiomass\tyield\n"
                                "1\t0\t166\t1.5\t-1\n1\t0\t167\t2.5\t-2\n1\t1\t166\t3\t{1, 2}\n"
                                "1\t1\t167\t0.1\t4\n1\t2\t166\t5\t5\n1\t2\t167\t6\t6\n";

Tool::Tool() {
    (void)m_folder.write("model.xml", model());
    (void)m_folder.write("setup.orrery", setup);
}

std::string Tool::makeEngine(const std::string& script) const {
    std::string path = m_folder.write("engine", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

RunningTool::RunningTool(std::string folder, std::vector<std::string> arguments, std::string standardOutput,
                         std::string standardError) {
    static int number = 0;
    const std::string captured = folder + "captured-" + std::to_string(++number);
    m_out = standardOutput.empty() ? captured + ".out" : std::move(standardOutput);
    m_err = standardError.empty() ? captured + ".err" : "";
    arguments.insert(arguments.begin(), ORRERY_BIN "/orrery-batch");
    std::vector<char*> command;
    command.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        command.push_back(argument.data());
    }
    command.push_back(nullptr);
    const int out = openForChild(m_out);
    const int err = openForChild(standardError.empty() ? m_err : standardError);
    m_process = ::fork();
    if (m_process == 0) {
        ::dup2(out, STDOUT_FILENO);
        ::dup2(err, STDERR_FILENO);
        ::setenv("TMPDIR", folder.c_str(), 1);
        if (::chdir(folder.c_str()) == 0) ::execv(command[0], command.data());
        ::_exit(99);
    }
    ::close(out);
    ::close(err);
}

RunningTool::~RunningTool() {
    if (m_process > 0) {
        sendSignal(SIGKILL);
        (void)finish();
    }
}

Finished RunningTool::finish() {
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = 0;
    return {.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
            .out = m_out == "/dev/full" ? "" : readWholeFile(m_out),
            .err = m_err.empty() ? "" : readWholeFile(m_err)};
}

bool RunningTool::hasEnded() const {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid != 0;
}

void RunningTool::awaitError(const std::string& text) const {
    while (textSoFar(m_err).find(text) == std::string::npos) {
        ASSERT_FALSE(hasEnded()) << "ended without: " << text;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void RunningTool::sendSignal(int number) const {
    ::kill(m_process, number);
}

} // namespace orrery::test
