// xfm spectrum and xfm compress: what the transforms do to a recording.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "examples/report.h"
#include "tool/commands.h"
#include "tool/picture.h"
#include "tool/processor.h"

namespace xfm::tool {

namespace fs = std::filesystem;

namespace {

struct Settings {
  std::string file, output;
  bool force = false;
  double percent = 5;
};

// Where the result goes: the name that was asked for, else the recording's with another end, in the folder where we are.
std::string output_of(const Settings& settings, const std::string& end) {
  std::error_code ignored;
  std::string output = settings.output;
  if (output.empty()) output = (settings.file == "-" ? "stdin" : fs::path(settings.file).stem().string()) + end;
  if (fs::equivalent(output, settings.file, ignored)) throw std::runtime_error(output + ": is the recording itself");
  if (settings.output.empty() && !settings.force && fs::exists(output, ignored))
    throw std::runtime_error(output + ": exists already (--output names another file, --force replaces this one)");
  return output;
}

std::shared_ptr<Settings> add_common(CLI::App& app, const char* end) {
  auto settings = std::make_shared<Settings>();
  app.add_option("FILE", settings->file, "a sound file of any kind; - is standard input")->required();
  app.add_option("-o,--output", settings->output, std::string("file of the result; else FILE's name with ") + end + ", here")->type_name("FILE");
  app.add_flag("-f,--force", settings->force, "replaces the result of an earlier run that has the name chosen here");
  return settings;
}

}  // namespace

void add_spectrum(CLI::App& app) {
  CLI::App* const spectrum = app.add_subcommand("spectrum", "Names a recording's strongest tones and draws its spectrogram");
  const auto settings = add_common(*spectrum, ".png");
  spectrum->footer("The picture is a PNG or, where the name ends with .svg, an SVG file.");
  spectrum->callback([settings] {
    require_avx();
    const std::string output = output_of(*settings, ".png");
    picture_format(output);
    SoundFile file(settings->file);
    print_recording(file);
    print_tones(file);
    write_spectrogram(file, output);
  });
}

void add_compress(CLI::App& app) {
  CLI::App* const compress = app.add_subcommand("compress", "Writes what the strongest part of a recording's cosine coefficients sounds like");
  const auto settings = add_common(*compress, "-compressed.wav");
  compress->add_option("-k,--keep", settings->percent, "percent of the coefficients that are kept")->check(CLI::Range(0.001, 100.0))->capture_default_str();
  compress->footer("The sound is a WAV file: 16 bits, or floating point where the recording goes beyond full scale.");
  compress->callback([settings] {
    require_avx();
    const std::string output = output_of(*settings, "-compressed.wav");
    SoundFile file(settings->file);
    print_recording(file);
    write_compressed(file, settings->percent / 100, output);
  });
}

}  // namespace xfm::tool
