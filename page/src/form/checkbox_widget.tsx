import { ariaDescribedByIds, type WidgetProps } from "@rjsf/utils";
import { title } from "@/lib/text";

export function CheckboxWidget({ id, value, label, readonly, disabled, onChange }: WidgetProps) {
    return (
        <label className="check">
            <input
                type="checkbox"
                id={id}
                checked={value === true}
                disabled={disabled || readonly}
                onChange={(event) => onChange(event.target.checked)}
                aria-describedby={ariaDescribedByIds(id)}
            />
            {title(label)}
        </label>
    );
}
