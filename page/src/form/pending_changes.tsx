import type { Change } from "@/lib/draft";
import { titleOfPath, valueText } from "@/lib/text";

interface Props {
    changes: Change[];
    busy: boolean;
    /** How many values are wrong as they stand. */
    wrong: number;
    onApply: () => void;
    onDiscard: () => void;
    onUndo: (path: string) => void;
}

/** What will be changed, old and new, before it is. */
export function PendingChanges({ changes, busy, wrong, onApply, onDiscard, onUndo }: Props) {
    return (
        <section className={`pending-changes${changes.length === 0 ? " none" : ""}`} aria-label="Pending changes">
            <p role="status">{summary(changes.length, wrong)}</p>
            {changes.length > 0 && (
                <>
                    <ul>
                        {changes.map((change) => (
                            <li key={change.path}>
                                <span className="change-name">{titleOfPath(change.path)}</span>{" "}
                                <span className="change-values">
                                    <del>{valueText(change.before)}</del> {"\u2192"} <ins>{valueText(change.after)}</ins>
                                    {change.follows && " (follows)"}
                                </span>
                                <button type="button" onClick={() => onUndo(change.path)}
                                    aria-label={`Undo the change of ${titleOfPath(change.path)}`}>
                                    Undo
                                </button>
                            </li>
                        ))}
                    </ul>
                    <div className="buttons">
                        <button type="button" className="primary" disabled={busy || wrong > 0} onClick={onApply}>
                            Apply
                        </button>
                        <button type="button" disabled={busy} onClick={onDiscard}>
                            Discard
                        </button>
                    </div>
                </>
            )}
        </section>
    );
}

function summary(count: number, wrong: number): string {
    if (count === 0) return "";
    const changes = count === 1 ? "1 change is not applied yet" : `${count} changes are not applied yet`;
    if (wrong === 0) return changes;
    return `${changes}; ${wrong === 1 ? "a value is" : `${wrong} values are`} wrong`;
}
