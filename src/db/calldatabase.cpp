#include "db/calldatabase.h"

#include "common/cp1252.h"
#include "common/vbtext.h"

#include <QFile>
#include <QFileInfo>
#include <array>
#include <cmath>
#include <filesystem>
#include <numeric>
#include <vector>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <unistd.h>
#endif

namespace {

constexpr qint64 kRec = CallRecord::kSize;

// Reads whole records; bytes beyond the end of the file read as NUL, so a record read past the
// end has a call field that matches no call sign. Once a binary search has narrowed to a few
// pages, narrowTo() reads that whole range in one go and the reads inside it come from memory:
// a search of a million records then reads the file 14 times instead of 20.
class RecordReader {
public:
    static constexpr qint64 kWindowBytes = 32 * 1024;

    explicit RecordReader(const QString& path) : file_(path) { open(); }
    bool open() {
        ok_ = file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        length_ = ok_ ? file_.size() : 0;
        return ok_;
    }
    bool ok() const { return ok_; }
    qint64 length() const { return length_; }
    bool narrowed() const { return windowGot_ >= 0; }
    // Records first..last (from 1) into memory; every later read must be inside that range.
    void narrowTo(qint64 first, qint64 last) {
        window_.resize(static_cast<size_t>((last - first + 1) * kRec));
        windowFirst_ = first;
        windowGot_ = readAt((first - 1) * kRec, window_.data(), static_cast<qint64>(window_.size()));
    }
    void read(qint64 number, CallRecord& into) {
        auto& bytes = into.bytes();
        qint64 got = 0;
        if (narrowed()) {
            const qint64 from = (number - windowFirst_) * kRec;
            got = std::clamp<qint64>(windowGot_ - from, 0, kRec);
            if (got > 0) std::copy_n(window_.data() + from, got, bytes.begin());
        } else {
            got = readAt((number - 1) * kRec, bytes.data(), kRec);
        }
        std::fill(bytes.begin() + got, bytes.end(), '\0');
    }

private:
    qint64 readAt(qint64 position, char* into, qint64 size) {
        if (!ok_) return 0;
#ifdef Q_OS_UNIX
        // One system call where a seek and a read take two.
        qint64 total = 0;
        while (total < size) {
            const ssize_t got = ::pread(file_.handle(), into + total, static_cast<size_t>(size - total), position + total);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) break;
            total += got;
        }
        return total;
#else
        if (!file_.seek(position)) return 0;
        return std::max<qint64>(0, file_.read(into, size));
#endif
    }

    QFile file_;
    bool ok_ = false;
    qint64 length_ = 0;
    std::vector<char> window_;
    qint64 windowFirst_ = 0;
    qint64 windowGot_ = -1;  // bytes of window_ read, -1 before narrowTo()
};

// The whole file mapped for reading; the same NUL rule as RecordReader past the end.
class MappedFile {
public:
    explicit MappedFile(const QString& path) : file_(path) {
        if (!file_.open(QIODevice::ReadOnly)) return;
        length_ = file_.size();
        data_ = length_ > 0 ? reinterpret_cast<const char*>(file_.map(0, length_)) : "";
        ok_ = data_ != nullptr;
        if (!ok_) length_ = 0;
    }
    ~MappedFile() { close(); }
    bool ok() const { return ok_; }
    qint64 length() const { return length_; }
    const char* data() const { return data_; }
    void read(qint64 number, CallRecord& into) const {
        auto& bytes = into.bytes();
        const qint64 from = (number - 1) * kRec;
        const qint64 got = std::clamp<qint64>(length_ - from, 0, kRec);
        if (got > 0) std::copy_n(data_ + from, got, bytes.begin());
        std::fill(bytes.begin() + got, bytes.end(), '\0');
    }
    void close() {
        if (length_ > 0 && data_) file_.unmap(reinterpret_cast<uchar*>(const_cast<char*>(data_)));
        data_ = nullptr;
        length_ = 0;
        file_.close();
    }

private:
    QFile file_;
    const char* data_ = nullptr;
    qint64 length_ = 0;
    bool ok_ = false;
};

// Writes "temp.db" from scratch and renames it over the target on commit. Until commit the
// target is untouched; a writer that is dropped removes its temporary file.
class AtomicWriter {
public:
    AtomicWriter(const QString& tempPath, const QString& target) : file_(tempPath), target_(target) {
        ok_ = file_.open(QIODevice::WriteOnly | QIODevice::Truncate);
        if (!ok_) error_ = file_.errorString();
    }
    ~AtomicWriter() {
        if (!committed_) {
            file_.close();
            file_.remove();
        }
    }
    bool write(const char* data, qint64 size) {
        if (ok_ && file_.write(data, size) != size) {
            ok_ = false;
            error_ = file_.errorString();
        }
        return ok_;
    }
    bool writeZeros(qint64 size) {
        const std::vector<char> zeros(static_cast<size_t>(std::min<qint64>(size, 1 << 16)), '\0');
        for (qint64 left = size; left > 0 && ok_; left -= static_cast<qint64>(zeros.size()))
            write(zeros.data(), std::min<qint64>(left, static_cast<qint64>(zeros.size())));
        return ok_;
    }
    // Copies bytes [from, to) of another file.
    bool copyRange(QFile& source, qint64 from, qint64 to) {
        if (!ok_ || !source.seek(from)) return ok_ = false;
        std::vector<char> buffer(1 << 20);
        for (qint64 pos = from; pos < to && ok_;) {
            const qint64 got = source.read(buffer.data(), std::min<qint64>(to - pos, buffer.size()));
            if (got <= 0) {
                error_ = source.errorString();
                return ok_ = false;
            }
            write(buffer.data(), got);
            pos += got;
        }
        return ok_;
    }
    Status commit() {
        if (!ok_ || !file_.flush()) return Status::Failed(error_.isEmpty() ? file_.errorString() : error_);
        file_.close();
        std::error_code ec;
        std::filesystem::rename(std::filesystem::path(file_.fileName().toStdU16String()),
                                std::filesystem::path(target_.toStdU16String()), ec);
        if (ec) return Status::Failed(QString::fromStdString(ec.message()));
        committed_ = true;
        return Status::Ok();
    }

private:
    QFile file_;
    QString target_;
    QString error_;
    bool ok_ = false;
    bool committed_ = false;
};

int32_t roundedCount(qint64 length) {
    return vb::toInt32(static_cast<double>(length) / static_cast<double>(kRec)).value_or(0);
}

}  // namespace

CallDatabase::CallDatabase(QString filePath) : path_(std::move(filePath)) {}

bool CallDatabase::exists() const { return QFileInfo(path_).isFile(); }

QString CallDatabase::tempPath() const { return QFileInfo(path_).absolutePath() + u'/' + QLatin1String(kTempName); }

void CallDatabase::createIfMissing() const {
    // Opening the file for records creates it, as the search and the sort always have.
    if (!exists()) {
        QFile create(path_);
        (void)create.open(QIODevice::WriteOnly | QIODevice::Append);
    }
}


int32_t CallDatabase::FindCallRecord(const QString& key) {
    // The search creates a missing file, as it always has; an existing one needs no look first.
    RecordReader file(path_);
    if (!file.ok()) {
        createIfMissing();
        file.open();
    }
    const QString trimmedKey = vb::trim(key);
    // The stored call decoded into a fixed buffer: the comparisons below are those of the trimmed
    // and the untrimmed field as strings, without building a string at every step.
    constexpr int callWidth = CallRecord::kLayout[0].width;
    std::array<char16_t, callWidth> stored{};
    int64_t low = 1;
    int64_t high = file.length() / kRec;
    if (high == 0) high = 1;
    do {
        if (!file.narrowed() && (high - low + 1) * kRec <= RecordReader::kWindowBytes) file.narrowTo(low, high);
        const int64_t mid = (low + high) / 2;
        file.read(mid, CurrentRecord);
        const char* call = CurrentRecord.bytes().data();
        for (int i = 0; i < callWidth; ++i) stored[i] = cp1252::toUnicode(static_cast<unsigned char>(call[i]));
        const QStringView storedView(stored.data(), callWidth);
        qsizetype b = 0, e = callWidth;
        while (b < e && stored[b] == u' ') ++b;
        while (e > b && stored[e - 1] == u' ') --e;
        if (storedView.mid(b, e - b) == trimmedKey) return static_cast<int32_t>(mid);
        if (QStringView(key).compare(storedView, Qt::CaseSensitive) > 0)
            low = mid + 1;
        else
            high = mid - 1;
    } while (low <= high);
    ClearRecord();
    return 0;
}

int32_t CallDatabase::CountRecords() const {
    if (!exists()) return 0;
    return roundedCount(QFileInfo(path_).size());
}

Status CallDatabase::AppendRecord() {
    if (!exists()) return Status::Ok();
    const int32_t n = CountRecords();
    return UpdateRecord(n + 1);
}

Status CallDatabase::UpdateRecord(int32_t n) {
    const QFileInfo info(path_);
    if (!info.isFile()) return Status::Ok();
    if (n < 1) return Status::Failed(QStringLiteral("Bad record number"));
    const qint64 at = (static_cast<qint64>(n) - 1) * kRec;
    if (at + kRec <= info.size()) {
        // A record already in the file is overwritten where it stands, in one write: the file
        // keeps its length whatever happens, no other record is touched, and an update of one
        // station in a large file costs one record instead of a copy of the whole file.
        QFile file(path_);
        if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) return Status::Failed(file.errorString());
        if (!file.seek(at) || file.write(CurrentRecord.bytes().data(), kRec) != kRec) return Status::Failed(file.errorString());
        return Status::Ok();
    }
    // Anything past the end (an append, a gap, a partial last record) grows the file: that goes
    // through temp.db like every other change of length.
    QFile old(path_);
    if (!old.open(QIODevice::ReadOnly)) return Status::Failed(old.errorString());
    const qint64 length = old.size();
    AtomicWriter out(tempPath(), path_);
    out.copyRange(old, 0, std::min(length, at));
    if (at > length) out.writeZeros(at - length);
    out.write(CurrentRecord.bytes().data(), kRec);
    if (at + kRec < length) out.copyRange(old, at + kRec, length);
    old.close();
    return out.commit();
}

namespace {

// The order of the whole records in data after the comb sort (shrink 0.65) by trimmed call; empty
// when the records are already in order.
std::vector<uint32_t> combSortOrder(const char* data, int64_t n) {
    std::vector<uint64_t> keys(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i) keys[i] = callSortKey(data + i * kRec);
    std::vector<uint32_t> order(static_cast<size_t>(n));
    std::iota(order.begin(), order.end(), 0u);

    // Comb sort exactly as the file has always been sorted: the order of records with equal
    // calls, and so the file's bytes, depend on these very swaps.
    bool swapped = false;
    int64_t gap = n;
    double more = 0;
    do {
        gap = static_cast<int64_t>(std::floor(static_cast<double>(gap + 1) * 0.65));
        more = static_cast<double>(gap);
        for (int64_t i = 0; i + gap < n; ++i) {
            if (keys[i] > keys[i + gap]) {
                std::swap(keys[i], keys[i + gap]);
                std::swap(order[i], order[i + gap]);
                more = 2;
                swapped = true;
            }
        }
    } while (more > 1.5);
    if (!swapped) order.clear();
    return order;
}

// The records of data in the given order (file order when empty), then the bytes after the last
// whole record.
void writeInOrder(AtomicWriter& out, const char* data, qint64 length, const std::vector<uint32_t>& order) {
    const int64_t n = length / kRec;
    if (order.empty()) {
        out.write(data, length);
        return;
    }
    std::vector<char> buffer;
    buffer.reserve(static_cast<size_t>(std::min<int64_t>(n, 8192) * kRec));
    for (int64_t i = 0; i < n; ++i) {
        const char* rec = data + static_cast<int64_t>(order[i]) * kRec;
        buffer.insert(buffer.end(), rec, rec + kRec);
        if (buffer.size() >= buffer.capacity()) {
            out.write(buffer.data(), static_cast<qint64>(buffer.size()));
            buffer.clear();
        }
    }
    out.write(buffer.data(), static_cast<qint64>(buffer.size()));
    out.write(data + n * kRec, length - n * kRec);
}

}  // namespace

Status CallDatabase::SortDatabase() {
    createIfMissing();
    MappedFile file(path_);
    const qint64 length = file.length();
    const int64_t n = length / kRec;
    if (n < 2) return Status::Ok();
    const std::vector<uint32_t> order = combSortOrder(file.data(), n);
    if (order.empty()) return Status::Ok();

    AtomicWriter out(tempPath(), path_);
    writeInOrder(out, file.data(), length, order);
    file.close();
    return out.commit();
}

Status CallDatabase::AppendSorted() {
    if (!exists()) {
        // What AppendRecord and SortDatabase leave: AppendRecord does nothing, the sort creates
        // the empty file.
        createIfMissing();
        return Status::Ok();
    }
    // The file as AppendRecord writes it, built in memory ...
    MappedFile file(path_);
    if (!file.ok()) return Status::Failed(QStringLiteral("Cannot read ") + path_);
    const qint64 length = file.length();
    const qint64 at = static_cast<qint64>(CountRecords()) * kRec;
    QByteArray appended;
    appended.reserve(std::max(length, at + kRec));
    appended.append(file.data(), std::min(length, at));
    if (at > length) appended.append(at - length, '\0');
    appended.append(CurrentRecord.bytes().data(), kRec);
    if (at + kRec < length) appended.append(file.data() + at + kRec, length - at - kRec);
    file.close();

    // ... and written once, sorted as SortDatabase sorts it.
    const int64_t n = appended.size() / kRec;
    const std::vector<uint32_t> order = n < 2 ? std::vector<uint32_t>{} : combSortOrder(appended.constData(), n);
    AtomicWriter out(tempPath(), path_);
    writeInOrder(out, appended.constData(), appended.size(), order);
    return out.commit();
}

void CallDatabase::FillCallList(QStringList& list) const {
    if (!exists()) return;
    list.clear();
    MappedFile file(path_);
    const int64_t n = file.length() / kRec;
    list.reserve(static_cast<qsizetype>(n));
    for (int64_t i = 0; i < n; ++i) list.append(vb::trim(cp1252::decode(file.data() + i * kRec, 6)));
}

Status CallDatabase::DeleteCallRecord(const QString& key) {
    if (!exists()) return Status::Ok();
    MappedFile in(path_);
    if (!in.ok()) return Status::Failed(QStringLiteral("Cannot read ") + path_);
    const int32_t n = roundedCount(in.length());
    const QString trimmedKey = vb::trim(key);
    AtomicWriter out(tempPath(), path_);
    CallRecord rec;
    for (int32_t i = 1; i <= n; ++i) {
        in.read(i, rec);
        if (trimmedKey != vb::trim(rec.Call())) out.write(rec.bytes().data(), kRec);
    }
    in.close();
    return out.commit();
}
