#include "win32/datalink/line_prompt.h"

#include "win32/system/dialog_program.h"

namespace tk::datalink {

std::optional<std::string> AskLine(const std::string& title, const std::string& question) {
    if (auto outcome = system::RunDialog({"--entry", "--title=" + title, "--text=" + question})) {
        if (outcome->exitCode != 0) return std::nullopt;
        while (outcome->output.ends_with('\n'))
            outcome->output.pop_back();
        return outcome->output;
    }
    if (!system::HasTerminal()) return std::nullopt;
    system::ShowOnTerminal(title + ": " + question + " ");
    return system::ReadFromTerminal();
}

}  // namespace tk::datalink
