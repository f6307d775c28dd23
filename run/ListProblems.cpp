#include "run/ListProblems.h"

#include "document/setup/ModelPath.h"
#include "model/PortLists.h"
#include "platform/Files.h"
#include "platform/values/Numbers.h"
#include "platform/values/Quoted.h"
#include "run/Export.h"
#include "run/SweepVariables.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orrery {

namespace {

/// A row of a port list.
struct Row {
    PortList list;
    std::size_t number; // from 0
    const Entry& entry;

    [[nodiscard]] PortDirection direction() const {
        return list == PortList::Outputs ? PortDirection::Output : PortDirection::Input;
    }
    [[nodiscard]] std::string_view port() const { return entry.text("portPath"); }
    [[nodiscard]] SetupPlace place(std::string_view field) const {
        return {std::string(listKey(list)), number, std::string(field)};
    }
    /// "Stepper 2"
    [[nodiscard]] std::string numbered() const { return fmt::format("{} {}", listWord(list), number + 1); }
    /// "Stepper /Field/Crop/rain", which says more, where it has a port.
    [[nodiscard]] std::string name() const {
        return port().empty() ? numbered() : fmt::format("{} {}", listWord(list), messageText(port()));
    }
};

/// Calls `visit` with each row of the list.
template <typename Visit>
void eachRow(const SetupDictionary& setup, PortList list, const Visit& visit) {
    const EntryList& entries = setup.entries(listKey(list));
    for (std::size_t number = 0; number < entries.size(); ++number) {
        visit(Row{list, number, entries[number]});
    }
}

SetupProblem portProblem(const Row& row, const PortFault& fault) {
    SetupProblem problem{fmt::format("{} ({})", fault.words, row.numbered()), row.place("portPath")};
    if (!fault.nearest.empty()) {
        problem.mends.push_back({fmt::format("Use {}", messageText(fault.nearest)), fault.nearest});
    }
    return problem;
}

void addPortProblem(const Row& row, PortFaults& ports, SetupProblems& problems) {
    if (!ports.isFaulty(row.port(), row.direction())) return;
    problems.add([&] { return portProblem(row, ports.fault(row.port(), row.direction())); });
}

void addFieldProblem(const Row& row, std::string_view field, const std::optional<NumberFault>& fault,
                     SetupProblems& problems) {
    if (!fault) return;
    problems.add([&] {
        return SetupProblem{fmt::format("{}: its {} {}.", row.name(), field, fault->words), row.place(field),
                            mendsOf(*fault)};
    });
}

constexpr std::array<std::string_view, 3> stepperFields = {"start", "step", "stop"};

/// "start, step and stop are empty", of those fields that are; empty where none is.
std::string emptyFields(const Row& stepper, std::string_view& first) {
    std::vector<std::string_view> empty;
    for (const std::string_view field : stepperFields) {
        if (stepper.entry.text(field).find_first_not_of(" \t") == std::string_view::npos) empty.push_back(field);
    }
    if (empty.empty()) return {};
    first = empty.front();
    std::string words(empty.front());
    for (std::size_t i = 1; i < empty.size(); ++i) {
        words.append(i + 1 == empty.size() ? " and " : ", ").append(empty[i]);
    }
    return words + (empty.size() == 1 ? " is empty and counts as 0" : " are empty and count as 0");
}

/// Whether the fields of a stepper are numbers, so that its values can be judged.
bool addStepperFaults(const Row& row, SetupProblems& problems) {
    std::string_view first;
    const std::string empty = emptyFields(row, first);
    if (!empty.empty() && !row.port().empty()) { // else it is a row that is still to be filled in
        problems.add([&] { return SetupProblem{fmt::format("{}: {}.", row.name(), empty), row.place(first)}; });
    }
    bool areNumbers = empty.empty();
    for (const std::string_view field : stepperFields) {
        const std::string_view text = row.entry.text(field);
        const std::optional<NumberFault> fault = numberFault(text, "0");
        if (!fault || text.find_first_not_of(" \t") == std::string_view::npos) continue;
        areNumbers = false;
        addFieldProblem(row, field, fault, problems);
    }
    return areNumbers;
}

SetupProblem offGridProblem(const Row& row, const StopOffGrid& off) {
    SetupProblem problem{
        fmt::format("{}: its last value is {}, because steps of {} from {} do not end at its stop {}{}.", row.name(),
                    shortestText(off.last), row.entry.text("step"), row.entry.text("start"), row.entry.text("stop"),
                    off.isRounding ? ", counted in single precision" : ""),
        row.place("stop")};
    for (const std::string& stop : off.stops) {
        problem.mends.push_back({fmt::format("Stop at {}", stop), stop});
    }
    return problem;
}

void addStepperProblems(const Row& row, SetupProblems& problems) {
    if (!addStepperFaults(row, problems)) return;
    const float start = floatValue(row.entry.text("start"));
    const float stop = floatValue(row.entry.text("stop"));
    const float step = floatValue(row.entry.text("step"));
    if (stepperCount(start, stop, step) < 1) {
        problems.add([&] {
            return SetupProblem{fmt::format("{}: {}", row.name(), noValuesWords(start, stop, step)),
                                row.place(step == 0 ? "step" : "stop")};
        });
    } else if (const std::optional<StopOffGrid> off = stopOffGrid(start, stop, step)) {
        problems.add([&] { return offGridProblem(row, *off); });
    }
}

void addInitializationProblems(const Row& row, SetupProblems& problems) {
    const std::string_view value = row.entry.text("value");
    const bool isToBeFilledIn = row.port().empty() && value.empty();
    if (!isToBeFilledIn) addFieldProblem(row, "value", sequenceFault(value), problems);
    if (const auto fault = pairFault(row.entry.text("coordinates"))) {
        problems.add([&] {
            return SetupProblem{fmt::format("{}: its coordinates are {}.", row.name(), fault->words),
                                row.place("coordinates"),
                                {{"Use { 0, 0 }", "{ 0, 0 }"}}};
        });
    }
}

/// The steppers by what they sweep: the port itself where the model has it, since it may be named in two ways.
class SweptInputs {
public:
    explicit SweptInputs(PortFaults& ports) : m_ports(ports) {}

    /// The number of the row that was added for the same input.
    [[nodiscard]] std::optional<std::size_t> find(std::string_view path) const {
        const auto found = m_rows.find(key(path));
        return found == m_rows.end() ? std::nullopt : std::optional(found->second);
    }
    void add(const Row& row) { m_rows.emplace(key(row.port()), row.number); }

private:
    [[nodiscard]] std::string key(std::string_view path) const {
        const ModelNode* port = m_ports.port(path, PortDirection::Input);
        return port == nullptr ? std::string(path) : portReference(*port)->path;
    }

    PortFaults& m_ports;
    std::unordered_map<std::string, std::size_t> m_rows;
};

void addSweptTwice(const Row& row, SweptInputs& swept, SetupProblems& problems) {
    if (row.port().empty()) return;
    if (const auto earlier = swept.find(row.port())) {
        problems.add([&] {
            return SetupProblem{
                fmt::format("Steppers {} and {} both sweep {}.", *earlier + 1, row.number + 1, quoted(row.port())),
                row.place("portPath")};
        });
    } else {
        swept.add(row);
    }
}

void addSweptAndInitialized(const Row& row, const SweptInputs& swept, SetupProblems& problems) {
    const auto stepper = row.port().empty() ? std::nullopt : swept.find(row.port());
    if (!stepper) return;
    problems.add([&] {
        return SetupProblem{fmt::format("{} is swept by stepper {} and given a value by initialization {}.",
                                        quoted(row.port()), *stepper + 1, row.number + 1),
                            row.place("portPath")};
    });
}

/// What each file of a run is: none is to be written twice, or over what the run reads.
class UsedFiles {
public:
    UsedFiles(const SetupDictionary& setup, std::string setupPath) : m_setupPath(std::move(setupPath)) {
        if (!m_setupPath.empty()) m_outputs.emplace(absolutePath(m_setupPath), theSetup);
        const std::string model = resolvedPath(setup.textOrEmpty(setup_key::modelPath), m_setupPath);
        if (!model.empty()) m_outputs.emplace(absolutePath(model), theModel);
    }
    void addProblem(const Row& output, SetupProblems& problems) {
        const std::string_view path = output.entry.text("outputPath");
        if (path.empty()) {
            problems.add([&] {
                return SetupProblem{output.name() + " has no result file.", output.place("outputPath")};
            });
            return;
        }
        const auto [file, isFirst] = m_outputs.emplace(absolutePath(resolvedPath(path, m_setupPath)), output.number);
        if (!isFirst) problems.add([&, &known = *file] { return usedTwice(output, known.second, known.first); });
    }

private:
    static constexpr std::size_t theSetup = static_cast<std::size_t>(-1); // no output's number
    static constexpr std::size_t theModel = static_cast<std::size_t>(-2);

    static SetupProblem usedTwice(const Row& output, std::size_t user, const std::string& path) {
        const std::size_t number = output.number + 1;
        return {fmt::format("{}, {}.",
                            user == theSetup ? fmt::format("Output {} would replace the setup file", number)
                            : user == theModel
                                ? fmt::format("Output {} would replace the model file", number)
                                : fmt::format("Outputs {} and {} have the same result file", user + 1, number),
                            quoted(path)),
                output.place("outputPath")};
    }

    std::string m_setupPath;
    std::unordered_map<std::string, std::size_t> m_outputs; // by absolute path
};

} // namespace

std::vector<SetupMend> mendsOf(const NumberFault& fault) {
    if (fault.mended.empty()) return {};
    return {{fmt::format("Use {}", fault.mended), fault.mended}};
}

void addOutputProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings, SetupProblems& problems) {
    const bool usesFiles = !isSingleRun(setup);
    UsedFiles files(setup, surroundings.setupPath);
    eachRow(setup, PortList::Outputs, [&](const Row& row) {
        addPortProblem(row, surroundings.ports, problems);
        if (usesFiles) files.addProblem(row, problems);
    });
}

void addInputProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings, SetupProblems& problems) {
    SweptInputs swept(surroundings.ports);
    SetupProblems ofSteppers; // whose list comes last
    eachRow(setup, PortList::Steppers, [&](const Row& row) {
        addPortProblem(row, surroundings.ports, ofSteppers);
        addSweptTwice(row, swept, ofSteppers);
        addStepperProblems(row, ofSteppers);
    });
    eachRow(setup, PortList::Initializations, [&](const Row& row) {
        addPortProblem(row, surroundings.ports, problems);
        addSweptAndInitialized(row, swept, problems);
        addInitializationProblems(row, problems);
    });
    problems.append(std::move(ofSteppers));
}

} // namespace orrery
