import Form, { type IChangeEvent } from "@rjsf/core";
import { useCallback, useMemo, useState } from "react";
import { ApiError, patchConfiguration } from "@/api/client";
import type { Part } from "@/api/configuration";
import { Notice } from "@/common/notice";
import { changes, edited, emptyDraft, followed, shown, toPatch, type Draft } from "@/lib/draft";
import { placeFaults, type Fault } from "@/lib/faults";
import { at, equal, type JsonObject } from "@/lib/json";
import { ArrayTemplate } from "./array_template";
import { CheckboxWidget } from "./checkbox_widget";
import { FieldTemplate } from "./field_template";
import { idPrefix, idSeparator, type FormContext } from "./form_context";
import { ObjectTemplate } from "./object_template";
import { PendingChanges } from "./pending_changes";
import { validator } from "./validator";

const templates = {
    FieldTemplate,
    ObjectFieldTemplate: ObjectTemplate,
    ArrayFieldTemplate: ArrayTemplate,
    // Both stand in the field's own template.
    DescriptionFieldTemplate: () => null,
    FieldErrorTemplate: () => null,
};
const widgets = { CheckboxWidget };
const ui = { "ui:submitButtonOptions": { norender: true } };

interface Props {
    part: Part;
    /** The dotted path of the part. */
    root: string;
    followedName: string;
    onApplied: (changed: string[]) => void;
}

/** The settings of a part of the configuration: a form made of its schema, and what is about to be changed. */
export function SettingsForm({ part, root, followedName, onApplied }: Props) {
    const { schema, held } = part;
    const [draft, setDraft] = useState<Draft>(emptyDraft);
    const [faults, setFaults] = useState<Fault[]>([]);
    const [problem, setProblem] = useState("");
    const [done, setDone] = useState("");
    const [busy, setBusy] = useState(false);

    const values = useMemo(() => shown(held, draft), [held, draft]);
    const wrong = useMemo(() => validator.validateFormData(values, schema).errors.length, [values, schema]);
    const placed = useMemo(
        () => placeFaults(faults, root, (path) => at(values, path.replace(/\.\d+$/, "")) !== undefined),
        [faults, root, values],
    );

    const take = useCallback(
        (next: Draft) => {
            // What the server said of a value holds until the value is another.
            setFaults((before) => before.filter(({ path }) => sameIn(draft, next, path.slice(root.length + 1))));
            setProblem("");
            setDone("");
            setDraft(next);
        },
        [draft, root],
    );

    async function apply() {
        setBusy(true);
        setProblem("");
        try {
            const { changed } = await patchConfiguration(toPatch(draft, root));
            setDraft(emptyDraft);
            setFaults([]);
            setDone("Applied");
            onApplied(changed);
        } catch (error) {
            const found = error instanceof ApiError ? (error.problem.faults ?? []) : [];
            setFaults(found);
            setProblem(found.length === 0 ? (error as Error).message : "Nothing was changed: see what is wrong");
        } finally {
            setBusy(false);
        }
    }

    const context: FormContext = {
        held,
        draft,
        followed: followedName,
        onFollow: (path) => take(followed(held, draft, path)),
    };
    return (
        <>
            <Form
                className="settings"
                idPrefix={idPrefix}
                idSeparator={idSeparator}
                schema={schema}
                uiSchema={ui}
                formData={values}
                formContext={context}
                templates={templates}
                widgets={widgets}
                validator={validator}
                extraErrors={placed.errors}
                liveValidate
                noHtml5Validate
                showErrorList={false}
                experimental_defaultFormStateBehavior={{ emptyObjectFields: "skipDefaults" }}
                onChange={({ formData }: IChangeEvent) => {
                    const next = edited(held, draft, values, (formData ?? {}) as JsonObject);
                    if (!sameDraft(draft, next)) take(next);
                }}
                onSubmit={() => {
                    if (draft.size > 0 && wrong === 0) void apply();
                }}
            />
            {problem !== "" && (
                <Notice kind="error">
                    {problem}
                    {placed.rest.length > 0 && (
                        <ul>
                            {placed.rest.map((fault) => (
                                <li key={fault.path + fault.reason}>
                                    {fault.path}: {fault.reason}
                                </li>
                            ))}
                        </ul>
                    )}
                </Notice>
            )}
            <p className="done" role="status">
                {done}
            </p>
            <PendingChanges
                changes={changes(held, draft)}
                busy={busy}
                wrong={wrong}
                onApply={() => void apply()}
                onDiscard={() => take(emptyDraft)}
                onUndo={(path) => take(new Map([...draft].filter(([other]) => other !== path)))}
            />
        </>
    );
}

function sameIn(before: Draft, after: Draft, path: string): boolean {
    const field = path.replace(/\[\d+\].*$/, "");
    return equal(before.get(field), after.get(field)) && before.has(field) === after.has(field);
}

function sameDraft(before: Draft, after: Draft): boolean {
    return before.size === after.size && [...after].every(([path, value]) => before.has(path) && equal(before.get(path), value));
}
