#include "apps/orva_fire/eval.h"

#include <cstdio>
#include <fstream>

#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/look_options.h"

namespace orva_fire {
namespace {

const char k_footer[] =
    "\nThe manifest is a table of comma-separated values, one line for each fire, and one without times for a "
    "recording "
    "without fire:\n"
    "  file,from,to,box,set\n"
    "  kitchen/pan.mp4,12.5,40,0.40 0.30 0.62 0.71,test\n"
    "  kitchen/cooking.mp4,,,,tune\n"
    "\nExamples:\n"
    "  orva-fire eval mine.csv\n"
    "  orva-fire eval mine.csv --confirm 1 --tiles auto --json results.json\n"
    "  orva-fire eval mine.csv --also-confirm 0 --also-confirm 2 --bare-grade 100\n";

void write_results(const std::string& path, const std::string& text, int standard_output) {
    if (path == "-") {
        event_log(standard_output, "standard output").write(text.substr(0, text.size() - 1));
        return;
    }
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw io_error("cannot write '" + path + "'");
}

}  // namespace

int run_eval(const eval_options& options) {
    const std::vector<labelled_clip> clips = read_labels(options.manifest);
    library_output output("", k_library_log_limit);
    const detector_session session;
    std::vector<clip_evaluation> results;
    bool whole = true;
    for (const labelled_clip& clip : clips) {
        std::fprintf(stderr, "orva-fire: %zu of %zu, %s\n", results.size() + 1, clips.size(), clip.file.c_str());
        results.push_back(evaluate_clip(clip, options.settings));
        const std::string& problem = results.back().problem;
        if (!problem.empty()) std::fprintf(stderr, "orva-fire: %s\n", problem.c_str());
        whole = whole && problem.empty();
    }
    if (output.own_output() < 0) throw io_error("standard output is closed");
    if (options.json != "-") write_results("-", evaluation_text(results, options.settings), output.own_output());
    if (!options.json.empty()) {
        write_results(options.json, evaluation_json(results, options.settings), output.own_output());
    }
    return whole ? 0 : k_exit_io;
}

int eval_command(int argc, const char* const* argv) {
    eval_options options;
    CLI::App app("measures how well fire is found in labelled recordings", "orva-fire eval");
    set_manners(app, k_footer);
    app.add_option("manifest", options.manifest, "table of recordings and their fires")
        ->required()
        ->type_name("MANIFEST");
    look_options look;
    add_look_options(app, look);
    app.add_option("--also-confirm", options.settings.confirms,
                   "judge the same reports with this confirmation too; may be given several times")
        ->type_name("SECONDS")
        ->check(CLI::Validator(CLI::Range(0.0, 3600.0)).description(""))
        ->allow_extra_args(false);
    app.add_option("--bare-grade", options.settings.grades,
                   "judge the library's bare answers at this grade too; may be given several times")
        ->type_name("0..100")
        ->check(CLI::Range(0, 100))
        ->allow_extra_args(false);
    app.add_option("--json", options.json, "write the results as JSON; - is standard output")->type_name("FILE");
    if (const std::optional<int> leave = read_command_line(app, argc, argv)) return *leave;
    options.settings.watch = watch_settings_of(look);
    options.settings.confirm = {look.confirm, look.cooldown};
    options.settings.rate = look.rate;
    return run_eval(options);
}

}  // namespace orva_fire
