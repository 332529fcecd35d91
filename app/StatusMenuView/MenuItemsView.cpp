#include "app/StatusMenuView/MenuItemsView.h"

#include "app/StatusMenuView/MenuRow.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QPainter>

#include <algorithm>

namespace tarnwick {

namespace {

constexpr double lineSpace = 9; ///< height of a separator with the air around it
constexpr double tightLineSpace = 5;
constexpr double lineInset = 14;
constexpr double paddingBelowRows = 6;

bool isShown(const MenuItem& item) {
    return item.id != MenuItem::Id::header && !item.hidden;
}

} // namespace

MenuItemsView::MenuItemsView(const Menu& menu, RunLoop& loop, QWidget* parent)
    : ReadAloudWidget(Role::group, parent),
      menu_(menu),
      rendering_(std::make_unique<RenderLoop>(loop, [this] { render(); })) {
    setSpokenText(QStringLiteral("Menu"));
    setMouseTracking(true); // else moves over its rows would not reach the window, which takes the held keys
}

MenuItemsView::~MenuItemsView() = default;

void MenuItemsView::render() {
    const Menu::Items& items = menu_.items();
    if (entries_.empty()) {
        makeEntries(items);
    }
    std::size_t index = 0;
    for (const MenuItem& item : items) {
        if (item.id == MenuItem::Id::header) {
            continue;
        }
        if (item.isAlternate && index > 0) {
            entries_[index - 1].alternate = item;
        } else {
            entries_[index].item = item;
            ++index;
        }
    }
    showItems();
    place();
    const int height = sizeHint().height();
    if (heightBefore_ != 0 && height != heightBefore_ && onSizeChange) {
        onSizeChange();
    }
    heightBefore_ = height;
}

void MenuItemsView::makeEntries(const Menu::Items& items) {
    for (const MenuItem& item : items) {
        if (item.id == MenuItem::Id::header || (item.isAlternate && !entries_.empty())) {
            continue;
        }
        Entry entry;
        if (item.id != MenuItem::Id::separator) {
            entry.row = new MenuRow(this); // NOLINT(cppcoreguidelines-owning-memory): owned by its parent
            entry.row->setTight(isTight_);
            entry.row->onChoose = [this, row = entry.row] {
                if (onChoose) {
                    onChoose(row->item().id);
                }
            };
        }
        entries_.push_back(entry);
    }
}

void MenuItemsView::showItems() {
    const bool wantsAlternates = held_ != Qt::NoModifier;
    for (Entry& entry : entries_) {
        if (entry.row == nullptr) {
            continue;
        }
        const bool showsAlternate = wantsAlternates && entry.alternate && isShown(*entry.alternate);
        entry.row->setItem(showsAlternate ? *entry.alternate : entry.item);
        entry.row->setShowsMnemonic(held_.testFlag(Qt::AltModifier));
        entry.row->setVisible(showsAlternate || isShown(entry.item));
    }
}

void MenuItemsView::setHeldKeys(Qt::KeyboardModifiers held) {
    const Qt::KeyboardModifiers known = held & (Qt::ShiftModifier | Qt::AltModifier);
    if (known != held_) {
        held_ = known;
        showItems();
    }
}

void MenuItemsView::setTight(bool isTight) {
    if (isTight == isTight_) {
        return;
    }
    isTight_ = isTight;
    for (const Entry& entry : entries_) {
        if (entry.row != nullptr) {
            entry.row->setTight(isTight);
        }
    }
    heightBefore_ = sizeHint().height();
    place();
}

int MenuItemsView::lineHeight() const {
    return ViewStyle(*this).length(isTight_ ? tightLineSpace : lineSpace);
}

void MenuItemsView::place() {
    int y = 0;
    for (Entry& entry : entries_) {
        entry.y = y;
        if (entry.row == nullptr) {
            y += lineHeight();
        } else if (!entry.row->isHidden()) {
            const int height = entry.row->sizeHint().height();
            entry.row->setGeometry(0, y, width(), height);
            y += height;
        }
    }
}

QSize MenuItemsView::sizeHint() const {
    const ViewStyle style(*this);
    QSize size(0, style.length(paddingBelowRows));
    for (const Entry& entry : entries_) {
        if (entry.row == nullptr) {
            size.rheight() += lineHeight();
        } else if (!entry.row->isHidden()) {
            size.rwidth() = std::max(size.width(), entry.row->sizeHint().width());
            size.rheight() += entry.row->sizeHint().height();
        }
    }
    return size;
}

void MenuItemsView::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

void MenuItemsView::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    QColor color = style.colors().primary();
    color.setAlphaF(0.14F);
    const int inset = style.length(lineInset);
    QPainter painter(this);
    for (const Entry& entry : entries_) {
        if (entry.row == nullptr) {
            painter.fillRect(inset, entry.y + lineHeight() / 2, width() - 2 * inset, 1, color);
        }
    }
}

std::vector<MenuRow*> MenuItemsView::visibleRows() const {
    std::vector<MenuRow*> rows;
    for (const Entry& entry : entries_) {
        if (entry.row != nullptr && !entry.row->isHidden()) {
            rows.push_back(entry.row);
        }
    }
    return rows;
}

std::vector<MenuRow*> MenuItemsView::choosableRows() const {
    std::vector<MenuRow*> rows = visibleRows();
    std::erase_if(rows, [](const MenuRow* row) { return !row->isEnabled(); });
    return rows;
}

void MenuItemsView::highlightNext(int direction) {
    const std::vector<MenuRow*> rows = choosableRows();
    const auto highlighted = std::ranges::find_if(rows, [](const MenuRow* row) { return row->hasFocus(); });
    if (rows.empty() || highlighted == rows.end()) {
        highlightEnd(-direction);
        return;
    }
    const auto count = static_cast<int>(rows.size());
    const auto at = static_cast<int>(highlighted - rows.begin());
    rows[static_cast<std::size_t>((at + direction + count) % count)]->setFocus(Qt::OtherFocusReason);
}

void MenuItemsView::highlightEnd(int direction) {
    const std::vector<MenuRow*> rows = choosableRows();
    if (!rows.empty()) {
        (direction < 0 ? rows.front() : rows.back())->setFocus(Qt::OtherFocusReason);
    }
}

bool MenuItemsView::chooseByMnemonic(QChar letter) {
    return chooseBy(&MenuItem::mnemonic, letter);
}

bool MenuItemsView::chooseByShortcut(QChar character) {
    return chooseBy(&MenuItem::shortcut, character);
}

bool MenuItemsView::chooseBy(char MenuItem::* key, QChar typed) {
    const std::vector<MenuRow*> rows = choosableRows();
    const auto row = std::ranges::find_if(rows, [key, typed](const MenuRow* candidate) {
        const char own = candidate->item().*key;
        return own != 0 && QChar::fromLatin1(own).toLower() == typed.toLower();
    });
    if (row == rows.end()) {
        return false;
    }
    (*row)->onChoose();
    return true;
}

} // namespace tarnwick
