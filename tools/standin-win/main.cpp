// The stand-in render tool as a Windows program, for running the tool's
// Windows build under Wine: plain C++17 and the Windows C runtime, no Qt.
//
// Usage: quillon-standin-render.exe CONTROLFILE
//
// Reads the control file and each task's run file by the rules of the
// native stand-in (tools/standin) and writes the same pixels at every
// task's Result path: the input image (BMP, 24 or 32 bits) with the effect
// when it loads, otherwise a canvas of the task's width x height. Whatever
// the format, the file holds BMP bytes, written exactly as the native tool
// writes a BMP. The paths in the files are read as given (Windows paths
// under Wine). Output lines, messages and exit status are the native
// tool's: 0 when every task was written, 2 when a task failed, 1 when the
// control file is missing, unreadable or not a control file.
//
// Fault switches (environment variables), a subset of the native tool's:
//   QUILLON_STANDIN_DELAY_MS=N   sleep N ms before each task
//   QUILLON_STANDIN_HANG=1       sleep forever after the first output line
//   QUILLON_STANDIN_JOURNAL=FILE append "pid <pid>" at start and
//                                "wrote <path>" after each result written
// A switch that is empty or "0" is off.

#include "MiniXml.h"
#include "Picture.h"
#include "Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

using namespace standin;

namespace {

constexpr std::int64_t kMaxFileBytes = std::int64_t(16) * 1024 * 1024;
// The largest BMP input that can hold 8192 x 8192 pixels, with room for its headers.
constexpr std::int64_t kMaxInputBytes = std::int64_t(kMaxSide) * kMaxSide * 4 + 1024 * 1024;

struct TaskSpec {
    std::string imagePath;
    std::string widthText;
    std::string heightText;
    std::string resultPath;
    std::string filterPath;
};

void printLine(const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void printError(const std::string& message)
{
    std::fprintf(stderr, "quillon-standin-render: %s\n", message.c_str());
    std::fflush(stderr);
}

bool switchOn(const char* name)
{
    const std::string value = environment(name);
    return !value.empty() && value != "0";
}

std::int64_t envNumber(const char* name)
{
    const std::string text = environment(name);
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    return end == text.c_str() ? 0 : value;
}

void journal(const std::string& line)
{
    const std::string path = environment("QUILLON_STANDIN_JOURNAL");
    if (!path.empty())
        appendToFile(path, line + "\n");
}

bool parseControlFile(
    const std::string& bytes, std::vector<TaskSpec>* tasks, std::string* format, std::string* error)
{
    XmlElement root;
    std::string why;
    if (!parseXml(bytes, &root, &why)) {
        *error = "the control file is not XML: " + why;
        return false;
    }
    if (root.name != "Tasks") {
        *error = "the control file has no Tasks element";
        return false;
    }
    for (const XmlElement& task : root.children) {
        if (task.name != "Task")
            continue;
        TaskSpec item;
        if (const XmlElement* image = task.child("Image")) {
            item.imagePath = image->attribute("value");
            item.widthText = image->attribute("width");
            item.heightText = image->attribute("height");
        }
        if (const XmlElement* result = task.child("Result"))
            item.resultPath = result->attribute("path");
        if (const XmlElement* filter = task.child("Filter"))
            item.filterPath = filter->attribute("value");
        tasks->push_back(item);
    }
    const XmlElement* global = root.child("GlobalSettings");
    const XmlElement* options = global ? global->child("BitmapFormatOptions") : nullptr;
    const XmlElement* chosen = options ? options->child("DefaultFormat") : nullptr;
    *format = chosen ? chosen->attribute("value") : std::string();
    return true;
}

bool readRunFile(const std::string& path, RunSpec* spec, std::string* error)
{
    std::string bytes;
    if (!readSmallFile(path, kMaxFileBytes, &bytes, error))
        return false;
    XmlElement root;
    std::string why;
    if (!parseXml(bytes, &root, &why)) {
        *error = "the filter \"" + path + "\" is not XML: " + why;
        return false;
    }
    // The run file holds one preset; whatever its element name, the first one counts.
    const XmlElement* presets = root.child("Presets");
    const XmlElement* preset = presets && !presets->children.empty() ? &presets->children.front() : nullptr;
    const XmlElement* settings = preset ? preset->child("Settings") : nullptr;
    spec->variation = settings ? settings->attribute("variation") : std::string();
    spec->mapType = settings ? settings->attribute("map_type") : std::string();
    spec->controls.clear();
    const XmlElement* controls = preset ? preset->child("Controls") : nullptr;
    if (!controls)
        return true;
    for (const XmlElement& control : controls->children) {
        std::string value;
        for (const XmlElement& child : control.children) {
            if (child.name == "Value" || child.name == "Checked")
                value = child.attribute("value");
        }
        spec->controls.push_back(control.attribute("id") + "=" + value);
    }
    return true;
}

bool renderAndWrite(const TaskSpec& task, const RunSpec& run, std::string* error)
{
    try {
        Picture input;
        std::string bytes;
        std::string ignored;
        if (!task.imagePath.empty() && readSmallFile(task.imagePath, kMaxInputBytes, &bytes, &ignored))
            input = decodeBmp(bytes);
        const Picture image
            = renderTask(input, sideFromText(task.widthText), sideFromText(task.heightText), run);
        return writeFileAtomically(task.resultPath, encodeBmp(image), error);
    } catch (const std::bad_alloc&) {
        *error = "nothing rendered for \"" + task.resultPath + "\"";
        return false;
    }
}

} // namespace

int runStandin(const std::vector<std::string>& args)
{
    setBinaryOutput();
    const std::string controlPath = args.size() > 1 ? args[1] : std::string();
    if (controlPath.empty()) {
        printError("no control file given (usage: quillon-standin-render CONTROLFILE)");
        return 1;
    }
    std::string controlBytes;
    std::string error;
    if (!readSmallFile(controlPath, kMaxFileBytes, &controlBytes, &error)) {
        printError(error);
        return 1;
    }
    journal("pid " + std::to_string(processId()));
    printLine("Quillon stand-in render tool: " + controlPath);
    if (switchOn("QUILLON_STANDIN_HANG"))
        sleepForever();

    std::vector<TaskSpec> tasks;
    std::string format;
    if (!parseControlFile(controlBytes, &tasks, &format, &error)) {
        printError(error);
        return 1;
    }
    const std::int64_t delayMs
        = std::clamp<std::int64_t>(envNumber("QUILLON_STANDIN_DELAY_MS"), 0, 24 * 3600 * 1000);
    bool allWritten = true;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const TaskSpec& task = tasks[i];
        if (delayMs > 0)
            sleepMilliseconds(delayMs);
        printLine("Rendering task " + std::to_string(i + 1) + "/" + std::to_string(tasks.size()) + ": "
            + task.resultPath);
        RunSpec run;
        if (!readRunFile(task.filterPath, &run, &error) || !renderAndWrite(task, run, &error)) {
            printLine("Error: " + error);
            allWritten = false;
        } else {
            journal("wrote " + task.resultPath);
        }
    }
    printLine("Done");
    return allWritten ? 0 : 2;
}
