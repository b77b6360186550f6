import { descriptionId, errorId, titleId, type FieldTemplateProps } from "@rjsf/utils";
import { isOwn } from "@/lib/draft";
import { at } from "@/lib/json";
import { rangeText, title, valueText } from "@/lib/text";
import { pathOfId, type FormContext } from "./form_context";

/** A field: name, input, what it means, what it may be, what is wrong, and whose value it is. */
export function FieldTemplate(props: FieldTemplateProps) {
    const { id, schema, children, hidden, rawErrors, label } = props;
    if (hidden) return <div hidden>{children}</div>;
    if (schema.type === "object") return children;
    const context = props.formContext as FormContext;
    const path = pathOfId(id);
    const pending = context.draft.has(path);
    return (
        <div className={`field${pending ? " pending" : ""}${rawErrors?.length ? " wrong" : ""}`}>
            {schema.type === "array" ? (
                <span className="label" id={titleId(id)}>
                    {title(label)}
                </span>
            ) : (
                schema.type !== "boolean" && <label htmlFor={id}>{title(label)}</label>
            )}
            <div className="input">{children}</div>
            <p className="hint" id={descriptionId(id)}>
                {[schema.description, rangeText(schema)].filter(Boolean).join(" \u2013 ")}
                {(props.readonly || schema.readOnly) && " (read only)"}
            </p>
            {rawErrors && rawErrors.length > 0 && (
                <p className="error" id={errorId(id)} role="alert">
                    {rawErrors.join(". ")}
                </p>
            )}
            <Origin path={path} context={context} />
        </div>
    );
}

/** Whose value a setting has, and the way back to the one that it follows. */
function Origin({ path, context }: { path: string; context: FormContext }) {
    const common = at(context.held.common, path);
    if (common === undefined || !isOwn(context.held, context.draft, path)) return null;
    return (
        <button type="button" className="follow" onClick={() => context.onFollow(path)}>
            Follow {context.followed} ({valueText(common)})<span className="reader"> for {title(path)}</span>
        </button>
    );
}
