#include "chain/ui/ChainListModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace quillon {
namespace {

RecordPtr filterNamed(const QString& name)
{
    RecordPtr record = Record::create();
    record->setString(key::name, name);
    return record;
}

// The chain list as the user reads it: position number and name.
QStringList printed(const QAbstractItemModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows.append(model.headerData(row, Qt::Vertical).toString() + QLatin1Char(' ')
            + model.index(row, ChainListModel::filterColumn).data().toString());
    return rows;
}

TEST(ChainListModel, EditsInsertMoveAndRemoveRowsInsteadOfResetting)
{
    ChainListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);

    model.append({ filterNamed("A"), filterNamed("B"), filterNamed("C") });
    EXPECT_EQ(printed(model), QStringList({ "1. A", "2. B", "3. C" }));
    model.moveRecord(2, -1);
    EXPECT_EQ(printed(model), QStringList({ "1. A", "2. C", "3. B" }));
    model.moveRecord(0, +1);
    EXPECT_EQ(printed(model), QStringList({ "1. C", "2. A", "3. B" }));
    model.moveRecord(2, +1); // past the end: nothing
    model.removeRecord(0);
    EXPECT_EQ(printed(model), QStringList({ "1. A", "2. B" }));
    EXPECT_EQ(resets.count() + inserted.count() + moved.count() + removed.count(), 4);
    EXPECT_EQ(resets.count(), 0);

    model.setRecords({ filterNamed("Z") });
    EXPECT_EQ(printed(model), QStringList({ "1. Z" }));
    EXPECT_EQ(resets.count(), 1);
}

TEST(ChainListModel, TheLibraryHasNoRowsUntilItIsRead)
{
    LibraryListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.library());
    model.setLibrary({ filterNamed("Blur") });
    EXPECT_EQ(
        model.index(0, LibraryListModel::adsFilterNameColumn).data().toString(), QStringLiteral("Blur"));
}

} // namespace
} // namespace quillon
