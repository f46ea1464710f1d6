// Qt's item models as a participant of bench/compare/run: two QSortFilterProxyModel, the second
// on the first, over a model of the log's rows. Reads the log as CSV. Uses one thread, and ends
// with 3 for work that it does not do.

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QString>
#include <QVariant>
#include <QVector>

#include <algorithm>
#include <fstream>
#include <memory>
#include <string_view>

#include "measure.h"
#include "view_work.h"

using compare::Answer;
using compare::fail;
using compare::Request;
using compare::timed;

namespace {

using Row = QVector<QString>;

QString text(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

// The rows stand in one array of pointers, as those of a table do.
class Log : public QAbstractTableModel {
public:
    explicit Log(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::string line;
        if (!std::getline(file, line)) {
            fail("cannot read " + path);
        }
        names_ = values(line);
        while (std::getline(file, line)) {
            rows_.push_back(std::make_unique<Row>(values(line)));
        }
    }

    int column(const char* name) const {
        const auto found = std::find(names_.begin(), names_.end(), QString(name));
        if (found == names_.end()) {
            fail(std::string("no column ") + name);
        }
        return static_cast<int>(found - names_.begin());
    }
    const Row& names() const { return names_; }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(names_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole && role != Qt::EditRole) {
            return {};
        }
        return rows_[place(index)]->at(index.column());
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        (*rows_[place(index)])[index.column()] = value.toString();
        emit dataChanged(index, index, {role});
        return true;
    }
    bool removeRows(int row, int count, const QModelIndex& parent) override {
        beginRemoveRows(parent, row, row + count - 1);
        rows_.erase(rows_.begin() + row, rows_.begin() + row + count);
        endRemoveRows();
        return true;
    }

private:
    // The log's CSV quotes nothing.
    static Row values(std::string_view line) {
        Row row;
        while (true) {
            const std::size_t end = std::min(line.find(','), line.size());
            row.push_back(text(line.substr(0, end)));
            if (end == line.size()) {
                return row;
            }
            line.remove_prefix(end + 1);
        }
    }
    static std::size_t place(const QModelIndex& index) {
        return static_cast<std::size_t>(index.row());
    }

    Row names_;
    std::vector<std::unique_ptr<Row>> rows_;
};

struct Stack {
    explicit Stack(const Request& request) : log(request.input) {
        lower.setSourceModel(&log);
        upper.setSourceModel(&lower);
        upper.rowCount();  // makes the mappings of both
    }

    Log log;
    QSortFilterProxyModel lower;
    QSortFilterProxyModel upper;
};

QString cell(const QAbstractItemModel& model, int row, int column) {
    return model.index(row, column).data().toString();
}

void keepRows(const QAbstractItemModel& model, const Log& log, const Request& request) {
    if (request.result.empty()) {
        return;
    }
    std::ofstream file(request.result, std::ios::binary);
    for (int row = -1; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            const QString value = row < 0 ? log.names().at(column) : cell(model, row, column);
            file << (column > 0 ? "," : "") << value.toStdString();
        }
        file << '\n';
    }
}

Answer sortWork(const Request& request) {
    Answer answer;
    Stack stack(request);
    const int column = stack.log.column(view_work::sorted);
    stack.upper.setSortCaseSensitivity(Qt::CaseInsensitive);
    timed(answer, [&] { stack.upper.sort(column); });
    answer.rows = static_cast<std::uint64_t>(stack.upper.rowCount());
    keepRows(stack.upper, stack.log, request);
    return answer;
}

Answer filterWork(const Request& request) {
    Answer answer;
    Stack stack(request);
    const int column = stack.log.column(view_work::searched);
    timed(answer, [&] {
        stack.lower.setFilterKeyColumn(column);
        stack.lower.setFilterFixedString(view_work::wanted);
        answer.rows = static_cast<std::uint64_t>(stack.upper.rowCount());
    });
    keepRows(stack.upper, stack.log, request);
    return answer;
}

// From the end, so that those still to go stay where they are.
Answer deleteWork(const Request& request) {
    Answer answer;
    Stack stack(request);
    timed(answer, [&] {
        for (int row = (stack.upper.rowCount() / 2) * 2 - 1; row > 0; row -= 2) {
            stack.upper.removeRows(row, 1);
        }
    });
    answer.rows = static_cast<std::uint64_t>(stack.log.rowCount());
    keepRows(stack.log, stack.log, request);
    return answer;
}

Answer setWork(const Request& request) {
    Answer answer;
    Stack stack(request);
    const int column = stack.log.column(view_work::searched);
    const view_work::SetCells cells(static_cast<unsigned>(stack.log.rowCount()));
    std::vector<QString> texts;
    for (unsigned i = 0; i < cells.count; ++i) {
        texts.push_back(text(view_work::newText(i)));
    }
    timed(answer, [&] {
        for (unsigned i = 0; i < cells.count; ++i) {
            const int row = static_cast<int>(cells.row(i));
            answer.rows += stack.upper.setData(stack.upper.index(row, column), texts[i]);
        }
    });
    keepRows(stack.upper, stack.log, request);
    return answer;
}

// What is read is looked at: its length and its first character.
Answer readWork(const Request& request) {
    Answer answer;
    Stack stack(request);
    const int rows = stack.upper.rowCount();
    const auto columns = view_work::readColumns(static_cast<unsigned>(rows));
    std::vector<int> numbers;
    for (const char* name : columns) {
        numbers.push_back(stack.log.column(name));
    }
    for (unsigned run = 0; run < request.repeat; ++run) {
        answer.rows = 0;
        timed(answer, [&] {
            for (int row = 0; row < rows; ++row) {
                for (int column : numbers) {
                    const QString value = cell(stack.upper, row, column);
                    answer.rows += static_cast<std::uint64_t>(value.size());
                    answer.rows += value.isEmpty() ? 0 : value.at(0).unicode();
                }
            }
        });
    }
    keepRows(stack.upper, stack.log, request);
    return answer;
}

struct Work {
    std::string_view name;
    Answer (*run)(const Request&);
};

constexpr Work works[] = {
    {"view-sort", sortWork}, {"view-filter", filterWork}, {"view-delete", deleteWork},
    {"view-set", setWork},   {"view-read", readWork},
};

}  // namespace

int main(int count, char** arguments) {
    const Request request = compare::request(count, arguments);
    for (const Work& work : works) {
        if (work.name == request.work) {
            compare::print(work.run(request), qVersion());
            return 0;
        }
    }
    return 3;
}
