import { useEffect, useRef, useState } from "react";
import { ApiError, post } from "@/api/client";
import type { CalibrationAnswer, Residual, StreamStatus } from "@/api/types";
import { Notice } from "@/common/notice";
import { usePicture } from "@/common/picture";
import type { Fault } from "@/lib/faults";
import type { Json } from "@/lib/json";
import { AnswerView } from "./answer_view";
import { KnownParameters } from "./known_parameters";
import { MarkList } from "./mark_list";
import { addMark, moveEnd, nothingFixed, placeMarkFaults, readNumber, toReferences, unfinished, type Mark, type Tool } from "./marks";
import { PictureEditor } from "./picture_editor";

const tools: [Tool, string][] = [
    ["ground", "Segment on the ground"],
    ["vertical", "Pole, foot first"],
    ["move", "Move ends"],
];

/** The residuals of an answer by the marks that they belong to: the server answers in the order of the references. */
function byMark(marks: Mark[], answer: CalibrationAnswer | undefined): Map<number, Residual> {
    const ordered = [...marks.filter((mark) => mark.kind === "ground"), ...marks.filter((mark) => mark.kind === "vertical")];
    const pairs = ordered.map((mark, index) => [mark.id, answer?.residuals[index]] as const);
    return new Map(pairs.filter((pair): pair is readonly [number, Residual] => pair[1] !== undefined));
}

/** Finds how a camera is mounted from lengths that are drawn on its picture. */
export function CalibrationView({ stream, onSaved }: { stream: StreamStatus; onSaved: () => void }) {
    const [turn, setTurn] = useState(0);
    const path = `streams/${encodeURIComponent(stream.id)}/frame.jpg?annotated=0`;
    const picture = usePicture(stream.width > 0 ? path : undefined, turn);
    const [tool, setTool] = useState<Tool>("ground");
    const [marks, setMarks] = useState<Mark[]>([]);
    const [fixed, setFixed] = useState(nothingFixed);
    const [clickError, setClickError] = useState("1");
    const [answer, setAnswer] = useState<CalibrationAnswer>();
    const [faults, setFaults] = useState<Fault[]>([]);
    const [problem, setProblem] = useState("");
    const [done, setDone] = useState("");
    const [busy, setBusy] = useState(false);
    const added = useRef<number>();

    useEffect(() => {
        if (added.current !== undefined) document.getElementById(`mark-${added.current}`)?.focus();
        added.current = undefined;
    }, [marks]);

    if (stream.width === 0) return <p className="empty">The stream has no picture yet.</p>;
    const size = { width: stream.width, height: stream.height };

    function change(next: Mark[]) {
        setMarks(next);
        // An answer is one to the marks as they were.
        setAnswer(undefined);
        setDone("");
        setFaults([]);
        setProblem("");
    }

    async function solve(save: boolean) {
        setBusy(true);
        setFaults([]);
        setProblem("");
        setDone("");
        try {
            const references = toReferences(marks, size, fixed, readNumber(clickError));
            const body = { ...references, stream: stream.id, ...(save ? { save } : {}) };
            setAnswer(await post<CalibrationAnswer>("calibrate", body as unknown as Json));
            setDone(save ? "Saved: the stream measures in metres now" : "The camera was found");
            if (save) onSaved();
        } catch (error) {
            setAnswer(undefined);
            setFaults(error instanceof ApiError ? (error.problem.faults ?? []) : []);
            setProblem((error as Error).message);
        } finally {
            setBusy(false);
        }
    }

    const missing = unfinished(marks);
    const placed = placeMarkFaults(faults, marks);
    return (
        <div className="calibration">
            <div className="drawing">
                <div className="toolbar" role="group" aria-label="What the pointer does">
                    {tools.map(([kind, title]) => (
                        <button key={kind} aria-pressed={tool === kind} onClick={() => setTool(kind)}>
                            {title}
                        </button>
                    ))}
                    <button onClick={() => setTurn(turn + 1)}>New picture</button>
                </div>
                <PictureEditor
                    picture={picture.address}
                    size={size}
                    tool={tool}
                    marks={marks}
                    answer={answer}
                    onDrawn={(ends) => {
                        if (tool === "move") return;
                        const next = addMark(marks, tool, ends);
                        added.current = next.at(-1)?.id;
                        change(next);
                    }}
                    onMoved={(id, end, to) => change(moveEnd(marks, id, end, to))}
                    onRemove={(id) => change(marks.filter((mark) => mark.id !== id))}
                />
            </div>
            <div className="beside">
                <section className="card" aria-label="Marks">
                    <h2>Marks</h2>
                    <MarkList marks={marks} reasons={placed.byMark} residuals={byMark(marks, answer)} onChange={change} />
                </section>
                <KnownParameters fixed={fixed} clickError={clickError} onFixed={setFixed} onClickError={setClickError} />
                <div className="buttons">
                    <button className={answer ? "" : "primary"} disabled={busy || marks.length === 0 || missing.length > 0}
                        onClick={() => void solve(false)}>
                        Solve
                    </button>
                    <button className={answer ? "primary" : ""} disabled={busy || !answer} onClick={() => void solve(true)}>
                        Save
                    </button>
                </div>
                {missing.length > 0 && <p className="hint">Each mark needs its length in metres.</p>}
                {problem !== "" && (
                    <Notice kind="error">
                        {problem}
                        <ul>
                            {placed.rest.map((fault) => (
                                <li key={fault.path + fault.reason}>{fault.reason}</li>
                            ))}
                        </ul>
                    </Notice>
                )}
                <p className="done" role="status">
                    {done}
                </p>
                {answer && <AnswerView answer={answer} />}
            </div>
            <DrawingHelp />
        </div>
    );
}

function DrawingHelp() {
    return (
        <div className="help">
            <p className="hint" id="editor-help">
                Drag along something of known length, or click at both of its ends. With the keyboard: arrow keys move the
                cross, with Shift ten pixels; Enter sets an end, Escape gives up.
            </p>
            <p className="hint" id="handle-help">
                "Move ends" lets ends be dragged. Arrow keys move the end that has the focus; Delete removes its segment.
            </p>
        </div>
    );
}
