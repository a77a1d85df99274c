// Opening a file's resource fork and reading one resource from it, the fork in the extended
// attribute and in the AppleDouble companion: 1 MiB in the companion, and both at the largest size the
// attribute of a file in the temporary folder takes.
#include "files/AppleDouble.h"
#include "files/ResourceFork.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <sys/xattr.h>

using namespace orvel;
using namespace Qt::StringLiterals;

namespace {

constexpr FileTypeCode Type = 0x64617461; // 'data'

/// A fork of about size bytes: resources of at most 64 KiB with IDs 0, 1, 2 ...; nullopt when
/// size leaves no room for data.
std::optional<ResourceFork> forkOfSize(qsizetype size)
{
    ResourceFork fork;
    qint16 id = 0;
    while (fork.data().size() + 16 + 12 + 4 < size) {
        const qsizetype room = size - fork.data().size() - 16 - 12 - 4;
        const QByteArray chunk(std::min<qsizetype>(room, 64 * 1024), char('a' + id % 26));
        if (!fork.addData(chunk, Type, id++))
            return std::nullopt;
    }
    return id > 0 ? std::optional(fork) : std::nullopt;
}

/// The largest fork the attribute of a file in folder takes, found by halving.
qsizetype largestAttributeFork(const QString &folder)
{
    const QByteArray native = QFile::encodeName(folder + u"/probe"_s);
    QFile(folder + u"/probe"_s).open(QIODevice::WriteOnly);
    qsizetype low = 0, high = 64 * 1024 + 1;
    while (high - low > 1) {
        const qsizetype mid = (low + high) / 2;
        const QByteArray value(mid, 'x');
        if (setxattr(native.constData(), ResourceFork::AttributeName, value.constData(), size_t(mid), 0) == 0)
            low = mid;
        else
            high = mid;
    }
    return low;
}

void readOne(benchmark::State &state, const QString &path, qint16 id)
{
    qsizetype bytes = 0;
    for (auto _ : state) {
        const std::unique_ptr<ResourceFork> fork = ResourceFork::resourceForkForReadingAtPath(path);
        const QByteArray data = fork ? fork->dataForType(Type, id) : QByteArray();
        if (data.isEmpty()) {
            state.SkipWithError("the resource could not be read");
            return;
        }
        bytes += data.size();
        benchmark::DoNotOptimize(data.constData());
    }
    state.counters["resource_bytes"] = double(bytes) / double(state.iterations());
}

void run(benchmark::State &state, qsizetype size, ResourceFork::Storage storage)
{
    QTemporaryDir dir;
    const std::optional<ResourceFork> fork = forkOfSize(size);
    if (!fork) {
        state.SkipWithError("no fork of that size");
        return;
    }
    const QString path = dir.filePath(u"file"_s);
    QFile(path).open(QIODevice::WriteOnly);
    const QByteArray native = QFile::encodeName(path);
    bool stored = false;
    if (storage == ResourceFork::Storage::Attribute) {
        stored = setxattr(native.constData(), ResourceFork::AttributeName, fork->data().constData(),
                     size_t(fork->data().size()), 0)
            == 0;
    } else {
        AppleDouble ad;
        ad.setResourceFork(fork->data());
        stored = AppleDouble::writeForFile(path, ad);
    }
    if (!stored) {
        state.SkipWithError("the fork could not be stored");
        return;
    }
    state.counters["fork_bytes"] = double(fork->data().size());
    // The last resource, so that the whole map is walked.
    readOne(state, path, qint16(fork->resources().size() - 1));
}

void registerAll()
{
    QTemporaryDir probe;
    const qsizetype attributeMax = largestAttributeFork(probe.path());
    benchmark::RegisterBenchmark("ReadOne/AppleDouble/1MiB",
        [](benchmark::State &s) { run(s, 1024 * 1024, ResourceFork::Storage::AppleDouble); });
    // No 1 MiB case for the attribute: Linux takes at most 64 KiB in one, and ext4 about a block.
    const std::string largest = std::to_string(attributeMax) + "B";
    benchmark::RegisterBenchmark(("ReadOne/Attribute/largest_" + largest).c_str(),
        [attributeMax](benchmark::State &s) { run(s, attributeMax, ResourceFork::Storage::Attribute); });
    benchmark::RegisterBenchmark(("ReadOne/AppleDouble/largest_" + largest).c_str(),
        [attributeMax](benchmark::State &s) { run(s, attributeMax, ResourceFork::Storage::AppleDouble); });
}

} // namespace

int main(int argc, char **argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
