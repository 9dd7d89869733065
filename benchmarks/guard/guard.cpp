// 100,000 names against 1,000 rules of all four kinds, beside a plain loop over the same rules that evaluates every one
// of them too. Both must classify every name alike. The last line is the ratio of the two medians, ours to plain.

#include "files/QBFileSystemGuard.h"
#include "platform/PropertyList.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr int ruleCount = 1'000;
constexpr int nameCount = 100'000;

struct PlainRule {
    std::u16string label;
    int type;
};

/// Names as people give them, a part of them caught by a rule.
QString wordOf(std::minstd_rand &random, int length)
{
    QString word;
    while (word.size() < length)
        word += QChar(random() % 8 == 0 ? static_cast<char16_t>(0x4E00 + random() % 2000)
                                        : static_cast<char16_t>(u'a' + random() % 26));
    return word;
}

struct Scene {
    std::unique_ptr<QBFileSystemGuard> guard;
    std::vector<PlainRule> forbidden;
    std::vector<PlainRule> noSync;
    QStringList names;
};

QVariantList rulesOf(std::minstd_rand &random, int count, std::vector<PlainRule> &plain)
{
    QVariantList rules;
    for (int i = 0; i < count; ++i) {
        const QString label = wordOf(random, 4 + static_cast<int>(random() % 6));
        const int type = static_cast<int>(random() % 4);
        rules.append(QVariantMap{{QStringLiteral("label"), label}, {QStringLiteral("type"), qint64(type)}});
        plain.push_back({label.toStdU16String(), type});
    }
    return rules;
}

QString nameOf(std::minstd_rand &random, const Scene &scene)
{
    const QString word = wordOf(random, 8 + static_cast<int>(random() % 24));
    if (random() % 20 != 0)
        return word;
    const std::vector<PlainRule> &rules = random() % 2 == 0 ? scene.forbidden : scene.noSync;
    const PlainRule &rule = rules[random() % rules.size()];
    const QString label = QString::fromStdU16String(rule.label);
    switch (rule.type) {
    case 0:
        return label + word;
    case 1:
        return word + label;
    case 2:
        return word + label + word;
    default:
        return label;
    }
}

Scene makeScene()
{
    Scene scene;
    std::minstd_rand random(7);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("rules.plist"));
    const QVariantMap root{{QStringLiteral("forbidden"), rulesOf(random, ruleCount / 2, scene.forbidden)},
                           {QStringLiteral("noSync"), rulesOf(random, ruleCount / 2, scene.noSync)}};
    if (!platform::PropertyList::write(path, root))
        std::exit(1);
    scene.guard = QBFileSystemGuard::initWithPath(path);
    for (int i = 0; i < nameCount; ++i)
        scene.names.append(nameOf(random, scene));
    return scene;
}

const Scene &scene()
{
    static const Scene made = makeScene();
    return made;
}

bool matches(const PlainRule &rule, std::u16string_view name)
{
    switch (rule.type) {
    case 0:
        return name.starts_with(rule.label);
    case 1:
        return name.ends_with(rule.label);
    case 2:
        return name.find(rule.label) != std::u16string_view::npos;
    default:
        return name == rule.label;
    }
}

bool anyMatches(const std::vector<PlainRule> &rules, std::u16string_view name)
{
    bool matched = false;
    for (const PlainRule &rule : rules)
        matched |= matches(rule, name);
    return matched;
}

int plainType(const QString &name)
{
    const std::u16string_view view(reinterpret_cast<const char16_t *>(name.utf16()),
                                   static_cast<std::size_t>(name.size()));
    if (anyMatches(scene().forbidden, view))
        return 1;
    return anyMatches(scene().noSync, view) ? 2 : 0;
}

template <class Classify> void classifyAll(benchmark::State &state, Classify classify)
{
    std::array<qint64, 3> found{};
    for (auto _ : state) {
        found = {};
        for (const QString &name : scene().names)
            ++found[static_cast<std::size_t>(classify(name))];
        benchmark::DoNotOptimize(found);
    }
    state.counters["forbidden"] = static_cast<double>(found[1]);
    state.counters["noSync"] = static_cast<double>(found[2]);
    state.SetItemsProcessed(state.iterations() * nameCount);
}

void ours(benchmark::State &state)
{
    classifyAll(state, [](const QString &name) { return static_cast<int>(scene().guard->analyseNameType(name)); });
}

void plain(benchmark::State &state)
{
    classifyAll(state, plainType);
}

BENCHMARK(plain)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(ours)->Unit(benchmark::kMillisecond)->Repetitions(5);

/// Remembers the medians beside printing everything.
class Medians : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            if (run.aggregate_name == "median")
                (run.benchmark_name().starts_with("ours") ? oursTime : plainTime) = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    double oursTime = 0;
    double plainTime = 0;
};

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    for (const QString &name : scene().names)
        if (plainType(name) != static_cast<int>(scene().guard->analyseNameType(name))) {
            std::fprintf(stderr, "not alike: %s\n", qPrintable(name));
            return 1;
        }
    Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    if (medians.oursTime > 0 && medians.plainTime > 0)
        std::printf("%d rules, %d names: %.0f ms, plain loop %.0f ms, ratio %.2f\n", ruleCount, nameCount,
                    medians.oursTime, medians.plainTime, medians.oursTime / medians.plainTime);
    return 0;
}
