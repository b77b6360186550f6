import { useState, type FormEvent } from "react";
import { ApiError, get, post } from "@/api/client";
import type { AlgorithmInfo } from "@/api/types";
import { useLoaded } from "@/common/loaded";
import { placeFaults, type Fault } from "@/lib/faults";

/** Asks for what a stream needs at least; the rest is set once it is there. */
export function AddStream({ onDone }: { onDone: () => void }) {
    const [id, setId] = useState("");
    const [source, setSource] = useState("");
    const [loop, setLoop] = useState(false);
    const [chosen, setChosen] = useState<string[]>([]);
    const [faults, setFaults] = useState<Fault[]>([]);
    const [problem, setProblem] = useState("");
    const [busy, setBusy] = useState(false);
    const algorithms = useLoaded("algorithms", () => get<{ algorithms: AlgorithmInfo[] }>("algorithms"));

    async function submit(event: FormEvent) {
        event.preventDefault();
        setBusy(true);
        setFaults([]);
        setProblem("");
        try {
            await post("streams", { id, source, loop, algorithms: chosen });
            onDone();
        } catch (error) {
            const found = error instanceof ApiError ? (error.problem.faults ?? []) : [];
            setFaults(found);
            const placed = placeFaults(found, `streams.${id}`, () => true);
            if (found.length === 0) setProblem((error as Error).message);
            else setProblem(placed.rest.filter((fault) => fault.path !== "id").map((fault) => fault.reason).join(". "));
        } finally {
            setBusy(false);
        }
    }

    const reasonOf = (name: string) =>
        faults.find((fault) => fault.path === name || fault.path === `streams.${id}.${name}`)?.reason;

    return (
        <form className="card add-stream" onSubmit={(event) => void submit(event)} aria-label="Add a stream">
            <TextField name="id" label="Name" hint="Letters, digits, _ and -" value={id} onChange={setId}
                pattern="[A-Za-z0-9_\-]{1,64}" reason={reasonOf("id")} />
            <TextField name="source" label="Source" hint="A file on the server, or an address such as rtsp://camera/stream"
                value={source} onChange={setSource} reason={reasonOf("source")} />
            <label className="check">
                <input type="checkbox" checked={loop} onChange={(event) => setLoop(event.target.checked)} />
                Begin anew when a file ends
            </label>
            <fieldset className="choices">
                <legend>Algorithms, in the order in which they run</legend>
                {algorithms.value?.algorithms.map(({ name, type_name, problem: broken }) => (
                    <label className="check" key={type_name}>
                        <input
                            type="checkbox"
                            checked={chosen.includes(name)}
                            disabled={broken !== undefined}
                            onChange={(event) =>
                                setChosen((before) =>
                                    event.target.checked ? [...before, name] : before.filter((other) => other !== name),
                                )
                            }
                        />
                        {name}
                        {chosen.includes(name) && <span className="order">{chosen.indexOf(name) + 1}</span>}
                    </label>
                ))}
                {reasonOf("algorithms") && <p className="error">{reasonOf("algorithms")}</p>}
            </fieldset>
            {problem !== "" && (
                <p className="error" role="alert">
                    {problem}
                </p>
            )}
            <button className="primary" disabled={busy}>
                Add
            </button>
        </form>
    );
}

interface FieldProps {
    name: string;
    label: string;
    hint: string;
    value: string;
    onChange: (value: string) => void;
    pattern?: string;
    reason: string | undefined;
}

function TextField({ name, label, hint, value, onChange, pattern, reason }: FieldProps) {
    return (
        <div className="field">
            <label htmlFor={`new-${name}`}>{label}</label>
            <input
                id={`new-${name}`}
                value={value}
                pattern={pattern}
                required
                autoComplete="off"
                spellCheck={false}
                onChange={(event) => onChange(event.target.value)}
                aria-invalid={reason !== undefined}
                aria-describedby={`new-${name}-hint`}
            />
            <p id={`new-${name}-hint`} className={reason === undefined ? "hint" : "error"}>
                {reason ?? hint}
            </p>
        </div>
    );
}
