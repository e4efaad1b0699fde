#include "QtTestApp.h"

#include "ui/qt/ViewRenderer.h"

#include <QDropEvent>
#include <QMimeData>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace orvan;

namespace {

// A drop on a reorderable stack says which child went where, counted in the list before the
// move; a drop from another list, or one that leaves the child where it was, says nothing.
TEST(ReorderableStack, ADropTellsTheDraggedChildsOldAndNewPlace) {
    orvan::testing::qtApp();
    QWidget window;
    auto* container = new QWidget(&window);
    (new QVBoxLayout(&window))->addWidget(container);
    ui::qt::ViewRenderer renderer(container, std::make_shared<ui::qt::ActionDispatcher>());
    std::vector<std::pair<int, int>> moves;
    ui::Nodes rows;
    for (const char* name : {"a", "b", "c"}) rows.push_back(ui::row(name).key(name));
    renderer.render(ui::vstack(std::move(rows)).reorder([&](int from, int to) { moves.push_back({from, to}); }).key("order"));
    window.resize(400, 300);
    window.show();
    orvan::testing::settle();
    QWidget* stack = renderer.widgetForKey("order");
    ASSERT_NE(stack, nullptr);
    ASSERT_TRUE(stack->acceptDrops());
    QLayout* layout = stack->layout();
    ASSERT_EQ(layout->count(), 3);

    auto drop = [&](const QByteArray& payload, int toBelowChild) {
        QMimeData mime;
        mime.setData("application/x-orvan-reorder", payload);
        const QRect below = layout->itemAt(toBelowChild)->widget()->geometry();
        const QPoint at(below.center().x(), below.bottom() + 1);
        // Qt hands a drop only to the widget that took the drag's entry.
        QDragEnterEvent enter(at, Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(stack, &enter);
        QDropEvent event(QPointF(at), Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(stack, &event);
        orvan::testing::settle();
    };
    const QByteArray id = QByteArray::number(reinterpret_cast<quintptr>(stack));
    drop(id + ":0", 1);  // a dragged below b
    drop(id + ":2", 0);  // c dragged below a
    drop(id + ":1", 0);  // b dropped where it stands: nothing
    drop("1:0", 2);      // from some other list
    EXPECT_EQ(moves, (std::vector<std::pair<int, int>>{{0, 2}, {2, 1}}));
}

} // namespace
