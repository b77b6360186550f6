import { changeMark, nameOf, type Mark } from "./marks";
import type { Residual } from "@/api/types";
import { fixed } from "@/lib/text";

interface Props {
    marks: Mark[];
    /** What the server says of a mark, by its id. */
    reasons: Map<number, string>;
    /** What the answer says of each mark, by its id. */
    residuals: Map<number, Residual>;
    onChange: (marks: Mark[]) => void;
}

/** The marks with their lengths. */
export function MarkList({ marks, reasons, residuals, onChange }: Props) {
    if (marks.length === 0) {
        return <p className="empty">Nothing is marked yet. Draw along something whose length you know.</p>;
    }
    return (
        <ol className="marks">
            {marks.map((mark) => (
                <Entry
                    key={mark.id}
                    mark={mark}
                    name={nameOf(marks, mark)}
                    reason={reasons.get(mark.id)}
                    residual={residuals.get(mark.id)}
                    onChange={(change) => onChange(changeMark(marks, mark.id, change))}
                    onRemove={() => onChange(marks.filter((other) => other !== mark))}
                />
            ))}
        </ol>
    );
}

interface EntryProps {
    mark: Mark;
    name: string;
    reason: string | undefined;
    residual: Residual | undefined;
    onChange: (change: Partial<Mark>) => void;
    onRemove: () => void;
}

function Entry({ mark, name, reason, residual, onChange, onRemove }: EntryProps) {
    const id = `mark-${mark.id}`;
    return (
        <li className={`${mark.kind}${residual?.looks_wrong ? " suspect" : ""}`}>
            <label htmlFor={id}>{name}</label>
            <span className="length">
                <input id={id} inputMode="decimal" size={5} value={mark.metres} autoComplete="off" placeholder="0.00"
                    aria-label={`${name}: length in metres`} aria-invalid={reason !== undefined}
                    onChange={(event) => onChange({ metres: event.target.value })} />
                {"\u00b1"}
                <input inputMode="decimal" size={4} value={mark.tolerance} autoComplete="off" placeholder="exact"
                    aria-label={`${name}: known to so many metres`}
                    onChange={(event) => onChange({ tolerance: event.target.value })} />
                m
            </span>
            <button type="button" aria-label={`Remove ${name}`} onClick={onRemove}>
                {"\u00d7"}
            </button>
            {residual && (
                <p className="hint">
                    measured {fixed(residual.measured, 2)} m, off {fixed(residual.off, 3)} m
                    {residual.looks_wrong && <strong>: looks wrong, the others agree on another length</strong>}
                </p>
            )}
            {reason !== undefined && (
                <p className="error" role="alert">
                    {reason}
                </p>
            )}
        </li>
    );
}
