#include "db/calldatabase.h"

#include "common/cp1252.h"
#include "common/vbtext.h"

#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <filesystem>
#include <numeric>
#include <vector>

namespace {

constexpr qint64 kRec = CallRecord::kSize;

// Reads whole records; bytes beyond the end of the file read as NUL, so a record read past the
// end has a call field that matches no call sign.
class RecordReader {
public:
    explicit RecordReader(const QString& path) : file_(path) {
        ok_ = file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        length_ = ok_ ? file_.size() : 0;
    }
    bool ok() const { return ok_; }
    qint64 length() const { return length_; }
    void read(qint64 number, CallRecord& into) {
        auto& bytes = into.bytes();
        qint64 got = 0;
        if (ok_ && file_.seek((number - 1) * kRec)) got = std::max<qint64>(0, file_.read(bytes.data(), kRec));
        std::fill(bytes.begin() + got, bytes.end(), '\0');
    }

private:
    QFile file_;
    bool ok_ = false;
    qint64 length_ = 0;
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
    bool commit() {
        if (!ok_ || !file_.flush()) {
            if (error_.isEmpty()) error_ = file_.errorString();
            return false;
        }
        file_.close();
        std::error_code ec;
        std::filesystem::rename(std::filesystem::path(file_.fileName().toStdU16String()),
                                std::filesystem::path(target_.toStdU16String()), ec);
        if (ec) {
            error_ = QString::fromStdString(ec.message());
            return false;
        }
        committed_ = true;
        return true;
    }
    const QString& error() const { return error_; }

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

bool CallDatabase::fail(const QString& message) {
    error_ = message;
    return false;
}

int32_t CallDatabase::FindCallRecord(const QString& key) {
    createIfMissing();
    RecordReader file(path_);
    const QString trimmedKey = vb::trim(key);
    int64_t low = 1;
    int64_t high = file.length() / kRec;
    if (high == 0) high = 1;
    do {
        const int64_t mid = (low + high) / 2;
        file.read(mid, CurrentRecord);
        const QString stored = CurrentRecord.Call();
        if (vb::trim(stored) == trimmedKey) return static_cast<int32_t>(mid);
        if (QString::compare(key, stored, Qt::CaseSensitive) > 0)
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

bool CallDatabase::AppendRecord() {
    error_.clear();
    if (!exists()) return true;
    const int32_t n = CountRecords();
    return UpdateRecord(n + 1);
}

bool CallDatabase::UpdateRecord(int32_t n) {
    error_.clear();
    if (!exists()) return true;
    if (n < 1) return fail(QStringLiteral("Bad record number"));
    QFile old(path_);
    if (!old.open(QIODevice::ReadOnly)) return fail(old.errorString());
    const qint64 length = old.size();
    const qint64 at = (static_cast<qint64>(n) - 1) * kRec;
    AtomicWriter out(tempPath(), path_);
    out.copyRange(old, 0, std::min(length, at));
    if (at > length) out.writeZeros(at - length);
    out.write(CurrentRecord.bytes().data(), kRec);
    if (at + kRec < length) out.copyRange(old, at + kRec, length);
    old.close();
    return out.commit() || fail(out.error());
}

bool CallDatabase::SortDatabase() {
    error_.clear();
    createIfMissing();
    MappedFile file(path_);
    const qint64 length = file.length();
    const int64_t n = length / kRec;
    if (n < 2) return true;
    const char* data = file.data();

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
    if (!swapped) return true;

    AtomicWriter out(tempPath(), path_);
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
    file.close();
    return out.commit() || fail(out.error());
}

void CallDatabase::FillCallList(QStringList& list) const {
    if (!exists()) return;
    list.clear();
    MappedFile file(path_);
    const int64_t n = file.length() / kRec;
    list.reserve(static_cast<qsizetype>(n));
    for (int64_t i = 0; i < n; ++i) list.append(vb::trim(cp1252::decode(file.data() + i * kRec, 6)));
}

bool CallDatabase::DeleteCallRecord(const QString& key) {
    error_.clear();
    if (!exists()) return true;
    MappedFile in(path_);
    if (!in.ok()) return fail(QStringLiteral("Cannot read ") + path_);
    const int32_t n = roundedCount(in.length());
    const QString trimmedKey = vb::trim(key);
    AtomicWriter out(tempPath(), path_);
    CallRecord rec;
    for (int32_t i = 1; i <= n; ++i) {
        in.read(i, rec);
        if (trimmedKey != vb::trim(rec.Call())) out.write(rec.bytes().data(), kRec);
    }
    in.close();
    return out.commit() || fail(out.error());
}
