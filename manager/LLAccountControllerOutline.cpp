#include "manager/LLAccountController.h"

#include "storage/SettingsKeys.h"

#include <algorithm>

namespace letterloft {

namespace {

constexpr const char* pathColumn = "Column 1";
constexpr const char* autostartColumn = "Column 2";
constexpr double collapsedWidthInPoints = 175;

// The rows below an item are what is listed under its own text, at every level alike.
std::string keyOfChildren(const OutlineItem& item) { return item ? *item : keys::apps; }

} // namespace

std::size_t LLAccountController::outlineView_numberOfChildrenOfItem(OutlineView&, const OutlineItem& item) {
    return defaults->countOfList(keyOfChildren(item));
}

OutlineItem LLAccountController::outlineView_child_ofItem(OutlineView&, std::size_t index, const OutlineItem& item) {
    return defaults->textInList(keyOfChildren(item), index);
}

bool LLAccountController::outlineView_isItemExpandable(OutlineView& outline, const OutlineItem& item) {
    return outlineView_numberOfChildrenOfItem(outline, item) != 0;
}

CellValue LLAccountController::outlineView_objectValueForTableColumn_byItem(OutlineView&, TableColumn* column,
                                                                            const OutlineItem& item) {
    if (!item) return "ERROR - No item found!";
    const std::string identifier = column ? column->identifier() : std::string{};
    if (identifier == pathColumn) return *item;
    if (identifier == autostartColumn && defaults->isInList(keys::apps, *item))
        return defaults->isInList(keys::autostartApps, *item);
    return {};
}

void LLAccountController::outlineView_setObjectValue_forTableColumn_byItem(OutlineView&, const CellValue& value,
                                                                           TableColumn*, const OutlineItem& item) {
    const auto* ticked = std::get_if<bool>(&value);
    if (!ticked || !item) return;
    std::vector<std::string> apps = defaults->list(keys::autostartApps);
    if (*ticked)
        apps.push_back(*item);
    else
        std::erase(apps, *item);
    defaults->setList(keys::autostartApps, apps);
    (void)defaults->synchronize();
    myView->reloadData();
}

std::optional<Cell> LLAccountController::outlineView_dataCellForTableColumn_item(OutlineView&, TableColumn* column,
                                                                                 const OutlineItem& item) {
    if (!column) return std::nullopt;
    if (column->identifier() == pathColumn) {
        // Rows are paths, so this is hardly ever an account's name.
        return Cell{.editable = item && defaults->isInList(keys::accounts, *item)};
    }
    if (column->identifier() != autostartColumn) return std::nullopt;
    if (!item || !defaults->isInList(keys::apps, *item)) return Cell{};
    return Cell{.kind = Cell::Kind::checkBox, .imagePosition = Cell::ImagePosition::imageOnly, .editable = true};
}

bool LLAccountController::outlineView_shouldExpandItem(OutlineView& outline, const OutlineItem& item) {
    TableColumn* column = outline.tableColumnWithIdentifier(pathColumn);
    if (!item || !column) return true;
    // The bare width of the widest text: nothing is added for the indentation, and the column never gets narrower.
    const Font& font = outline.tableColumns().front()->dataCellFont();
    double width = column->width();
    for (const std::string& child : defaults->list(*item))
        width = std::max(width, font.widthInPoints(child));
    column->setWidth(width);
    return true;
}

bool LLAccountController::outlineView_shouldCollapseItem(OutlineView& outline, const OutlineItem& item) {
    bool isAnotherExpanded = false;
    for (const std::string& app : defaults->list(keys::apps)) // every one is asked about
        if (app != item && outline.isItemExpanded(app)) isAnotherExpanded = true;
    TableColumn* column = myView->tableColumnWithIdentifier(pathColumn);
    if (!isAnotherExpanded && column) column->setWidth(collapsedWidthInPoints);
    return true;
}

} // namespace letterloft
