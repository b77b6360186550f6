import { titleId, type ArrayFieldTemplateItemType, type ArrayFieldTemplateProps } from "@rjsf/utils";

/** A list whose entries can be added, taken away and put into another order. */
export function ArrayTemplate({ items, canAdd, onAddClick, readonly, disabled, idSchema }: ArrayFieldTemplateProps) {
    return (
        <div className="list" id={idSchema.$id} role="group" aria-labelledby={titleId(idSchema)}>
            {items.length === 0 && <p className="empty">none</p>}
            <ol>
                {items.map((item) => (
                    <Entry key={item.key} item={item} />
                ))}
            </ol>
            {canAdd && !readonly && !disabled && (
                <button type="button" onClick={onAddClick}>
                    Add an entry
                </button>
            )}
        </div>
    );
}

function Entry({ item }: { item: ArrayFieldTemplateItemType }) {
    const { index } = item;
    return (
        <li>
            {item.children}
            {!item.readonly && !item.disabled && (
                <span className="entry-buttons">
                    <button type="button" aria-label={`Move entry ${index + 1} up`} disabled={!item.hasMoveUp}
                        onClick={item.onReorderClick(index, index - 1)}>
                        {"\u2191"}
                    </button>
                    <button type="button" aria-label={`Move entry ${index + 1} down`} disabled={!item.hasMoveDown}
                        onClick={item.onReorderClick(index, index + 1)}>
                        {"\u2193"}
                    </button>
                    <button type="button" aria-label={`Remove entry ${index + 1}`} onClick={item.onDropIndexClick(index)}>
                        {"\u00d7"}
                    </button>
                </span>
            )}
        </li>
    );
}
