#include "host/cli/farm_job.h"

#include "host/cli/farm_templates.h"
#include "host/cli/frame_list.h"
#include "host/cli/json_output.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>

namespace velm::host {

namespace {

std::string templateText(const std::string &name) {
    for (const EmbeddedText &one : farmTemplates())
        if (one.name == name) return std::string(one.text);
    throw std::logic_error("there is no template " + name);
}

// Replaces the text between two marks, which are found one after the other and stay.
void replaceBetween(std::string &text, const std::string &before, const std::string &after, const std::string &with) {
    const std::size_t mark = text.find(before);
    const std::size_t start = mark + before.size();
    const std::size_t end = mark == std::string::npos ? mark : text.find(after, start);
    if (end == std::string::npos) throw std::logic_error("a template has no \"" + before + '"');
    text.replace(start, end - start, with);
}

// A list of frames for each task.
std::vector<std::string> chunksOf(const FarmJob &job) {
    std::vector<std::string> chunks;
    for (auto rest = job.frames.begin(); rest != job.frames.end();) {
        const auto end = rest + std::min<std::ptrdiff_t>(job.chunk, job.frames.end() - rest);
        chunks.push_back(frameText({rest, end}, job.usualStep));
        rest = end;
    }
    return chunks;
}

std::string shellList(const std::vector<std::string> &words) {
    std::string list;
    for (const std::string &word : words) list += (list.empty() ? "" : " ") + shellQuoted(word);
    return '(' + list + ')';
}

std::string scriptText(const FarmJob &job, const std::string &ending) {
    std::string text = templateText(fmt::format("velm-{}{}", job.parts > 0 ? "still" : "frames", ending));
    const std::string work =
        job.parts > 0 ? fmt::format("parts={}", job.parts) : fmt::format("frames={}", shellList(chunksOf(job)));
    replaceBetween(text, "# The job.\n", "# End of the job.\n",
                   fmt::format("velm={}\nscene={}\npicture={}\n{}\noptions={}\n", shellQuoted(job.velm),
                               shellQuoted(job.scene), shellQuoted(job.picture), work, shellList(job.options)));
    return text;
}

// A text in double quotes is the same in JSON and in YAML.
std::string yamlText(const std::string &text) { return Json(text).dump(); }

std::string openJdText(const FarmJob &job) {
    std::string text = templateText(job.parts > 0 ? "velm-still.yaml" : "velm-frames.yaml");
    const auto setDefault = [&text](const char *parameter, const std::string &value) {
        const std::string entry = fmt::format("  - name: {}\n", parameter);
        const std::size_t at = text.find(entry);
        if (at == std::string::npos) throw std::logic_error(fmt::format("a template has no parameter {}", parameter));
        std::string rest = text.substr(at);
        replaceBetween(rest, "    default: ", "\n", value);
        text.replace(at, std::string::npos, rest);
    };
    const std::filesystem::path picture(job.picture);
    setDefault("JobName", yamlText(std::filesystem::path(job.scene).stem()));
    setDefault("Scene", yamlText(job.scene));
    setDefault("Directory", yamlText(picture.parent_path()));
    setDefault("Picture", yamlText(picture.filename()));
    setDefault("Velm", yamlText(job.velm));
    if (job.parts > 0) {
        setDefault("Parts", std::to_string(job.parts));
    } else {
        setDefault("Frames", yamlText(frameText(job.frames, 1)));
        if (job.chunk > 1) // a list of frames is a text, not a number
            replaceBetween(text, "        - name: Frame\n          type: ", "    hostRequirements:\n",
                           fmt::format("STRING\n          range: {}\n", Json(chunksOf(job)).dump()));
    }
    std::string more;
    for (const std::string &option : job.options) more += fmt::format("            - {}\n", yamlText(option));
    replaceBetween(text, "            - openjd\n", "          timeout:", more);
    return text;
}

} // namespace

const std::vector<std::string> &farmEngines() {
    static const std::vector<std::string> names{"slurm", "openjd", "parallel"};
    return names;
}

std::string farmJobText(const FarmJob &job, const std::string &engine) {
    if (engine == "openjd") return openJdText(job);
    return scriptText(job, engine == "slurm" ? ".sbatch" : ".sh");
}

std::string shellQuoted(const std::string &word) {
    const bool isPlain = !word.empty() && std::ranges::all_of(word, [](unsigned char letter) {
        return std::isalnum(letter) != 0 ||
               std::string_view("_-+=:,./%@").find(static_cast<char>(letter)) != std::string_view::npos;
    });
    if (isPlain) return word;
    std::string text = "'";
    for (const char letter : word) letter == '\'' ? text += "'\\''" : text += letter;
    return text + "'";
}

} // namespace velm::host
